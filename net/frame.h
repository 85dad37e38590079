#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>

// The wire format of a message: two big-endian signed 32-bit numbers, the length of the whole
// message and the command, then the payload's bytes.
namespace corvane {

inline constexpr std::size_t kFrameHeaderBytes = 8;

struct Frame {
  enum class State { Whole, Incomplete, Malformed };

  State state = State::Incomplete;
  std::size_t length = 0;  // with the header, if whole
  std::int32_t command = 0;
  std::string_view payload;  // points into the bytes that were read
};

// Reads the message at the start of the bytes, by its header only. A length below the header's or
// above `maxBytes` is malformed; any other is incomplete until all its bytes are there.
Frame ReadFrame(std::string_view bytes,
                std::size_t maxBytes = std::numeric_limits<std::size_t>::max());

// The header of a message with a payload of so many bytes.
std::string CreateHeader(std::int32_t command, std::size_t payloadBytes);

// The bytes of one message.
std::string CreatePacket(std::int32_t command, std::string_view payload);

}  // namespace corvane
