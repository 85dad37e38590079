#include "net/frame.h"

#include <QtEndian>

namespace corvane {
namespace {

constexpr std::size_t kLengthBytes = 4;

}  // namespace

Frame ReadFrame(std::string_view bytes, std::size_t maxBytes) {
  Frame frame;
  if (bytes.size() < kLengthBytes) return frame;
  const auto length = qFromBigEndian<qint32>(bytes.data());
  const auto total = static_cast<std::size_t>(length);
  if (length < static_cast<qint32>(kFrameHeaderBytes) || total > maxBytes) {
    frame.state = Frame::State::Malformed;
    return frame;
  }
  if (bytes.size() < total) return frame;
  frame.state = Frame::State::Whole;
  frame.length = total;
  frame.command = qFromBigEndian<qint32>(bytes.data() + kLengthBytes);
  frame.payload = bytes.substr(kFrameHeaderBytes, total - kFrameHeaderBytes);
  return frame;
}

std::string CreateHeader(std::int32_t command, std::size_t payloadBytes) {
  std::string bytes(kFrameHeaderBytes, '\0');
  qToBigEndian(static_cast<qint32>(kFrameHeaderBytes + payloadBytes), bytes.data());
  qToBigEndian(command, bytes.data() + kLengthBytes);
  return bytes;
}

std::string CreatePacket(std::int32_t command, std::string_view payload) {
  std::string bytes;
  bytes.reserve(kFrameHeaderBytes + payload.size());
  bytes += CreateHeader(command, payload.size());
  bytes.append(payload);
  return bytes;
}

}  // namespace corvane
