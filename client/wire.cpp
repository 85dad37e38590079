#include "client/wire.h"

namespace corvane::client {

namespace {

void AppendInt32(std::string& output, std::int32_t value) {
  const auto bits = static_cast<std::uint32_t>(value);
  for (const int shift : {24, 16, 8, 0})
    output.push_back(static_cast<char>(bits >> shift));
}

}  // namespace

void AppendHeader(std::string& output, std::int32_t command, std::size_t payloadBytes) {
  AppendInt32(output, static_cast<std::int32_t>(kHeaderBytes + payloadBytes));
  AppendInt32(output, command);
}

void AppendFrame(std::string& output, std::int32_t command, std::string_view payload) {
  AppendHeader(output, command, payload.size());
  output.append(payload);
}

std::int32_t ReadInt32(std::string_view bytes) {
  std::uint32_t bits = 0;
  for (std::size_t i = 0; i < 4; ++i)
    bits = bits << 8 | static_cast<unsigned char>(bytes[i]);
  return static_cast<std::int32_t>(bits);
}

std::size_t FrameCutter::WholeLength(std::string_view bytes) {
  if (bytes.size() < kHeaderBytes) return kHeaderBytes;
  const std::int32_t length = ReadInt32(bytes);
  if (length < static_cast<std::int32_t>(kHeaderBytes)) return kImpossible;
  const auto whole = static_cast<std::size_t>(length);
  return whole > kMaxFrameBytes ? kImpossible : whole;
}

}  // namespace corvane::client
