// Cuts a stream into messages, in pieces and at once: the messages are the same, and so is the
// place of an error.

#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "buffers/byte_queue.h"
#include "net/frame.h"

namespace {

using corvane::ByteQueue;
using corvane::Frame;
using Messages = std::vector<std::pair<std::int32_t, std::string>>;

// Cuts off all complete messages. Returns whether the stream is still valid.
bool Cut(ByteQueue& queue, Messages& messages) {
  for (;;) {
    const Frame frame = corvane::ReadFrame(queue.Bytes());
    if (frame.state == Frame::State::Malformed) return false;
    if (frame.state == Frame::State::Incomplete) return true;
    messages.emplace_back(frame.command, frame.payload);
    queue.Consume(frame.length);
  }
}

}  // namespace

// The first byte gives the size of the pieces, the rest is the stream.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const std::string_view stream(reinterpret_cast<const char*>(data) + 1, size - 1);
  const std::size_t piece = data[0] % 16U + 1U;

  corvane::BufferPool pool;
  ByteQueue whole(pool);
  Messages expected;
  if (!whole.Append(stream)) return 0;
  const bool isSound = Cut(whole, expected);

  ByteQueue pieces(pool);
  Messages messages;
  bool goesOn = true;
  for (std::size_t at = 0; goesOn && at < stream.size(); at += piece) {
    if (!pieces.Append(stream.substr(at, piece))) return 0;
    goesOn = Cut(pieces, messages);
  }
  if (messages != expected || goesOn != isSound) std::abort();
  if (isSound && pieces.Bytes() != whole.Bytes()) std::abort();

  // The messages, framed again, are the stream.
  std::string again;
  for (const auto& [command, payload] : messages)
    again += corvane::CreatePacket(command, payload);
  if (!stream.starts_with(again)) std::abort();
  return 0;
}
