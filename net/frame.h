#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>

// The wire format of one message: a big-endian signed 32-bit length of the whole message, a
// big-endian signed 32-bit command, and the payload's bytes as they are.
namespace corvane {

inline constexpr std::size_t kFrameHeaderBytes = 8;

struct Frame {
  enum class State { Whole, Incomplete, Malformed };

  State state = State::Incomplete;
  std::size_t length = 0;  // of the whole message, when it is whole
  std::int32_t command = 0;
  std::string_view payload;  // points into the bytes that were read
};

// Reads the message at the start of the bytes. Malformed means a length that no message can have
// (less than its own header) or may have (more than `longest`); any other length waits for its
// bytes. Looks at the header only.
Frame ReadFrame(std::string_view bytes,
                std::size_t longest = std::numeric_limits<std::size_t>::max());

// The header of a message whose payload has so many bytes.
std::string CreateHeader(std::int32_t command, std::size_t payloadBytes);

// The bytes of one message.
std::string CreatePacket(std::int32_t command, std::string_view payload);

}  // namespace corvane
