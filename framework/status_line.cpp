#include "framework/status_line.h"

#include <algorithm>
#include <limits>

#include "framework/text.h"
#include "framework/visible_text.h"

namespace corvane {
namespace {

constexpr std::size_t kMaxLineBytes = 4096;
constexpr std::size_t kMaxNameBytes = 256;

std::string CutAt(std::size_t length) {
  return "... (" + std::to_string(length) + " bytes)";
}

std::string Joined(StatusParts parts, std::size_t maxNameBytes) {
  std::string line;
  std::size_t length = 0;
  bool isWhole = true;
  for (const auto& [text, isQuoted] : parts) {
    length += text.size();
    const bool isLong = isQuoted && text.size() > maxNameBytes;
    isWhole = isWhole &&
              AppendEscaped(line, isLong ? Beginning(text, maxNameBytes) : text, kMaxLineBytes);
    if (isWhole && isLong) line += CutAt(text.size());
  }
  if (!isWhole) line += CutAt(length);
  return line;
}

}  // namespace

std::string StatusLine(StatusParts parts) {
  return Joined(parts, std::numeric_limits<std::size_t>::max());
}

std::string LogLine(StatusParts parts) {
  return Joined(parts, kMaxNameBytes);
}

bool HasLongName(StatusParts parts) {
  return std::ranges::any_of(parts, [](const StatusPart& part) {
    return part.isQuoted && part.text.size() > kMaxNameBytes;
  });
}

}  // namespace corvane
