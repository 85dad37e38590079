#include "console/status_log.h"

#include <algorithm>
#include <cassert>
#include <iterator>

namespace corvane {
namespace {

constexpr std::size_t kBlockBytes = 64 * 1024;

}  // namespace

void StatusLog::Append(std::string_view prefix, std::string_view text) {
  if (myBlocks.empty() || myBlocks.back().bytes.size() >= kBlockBytes) {
    myBlocks.push_back({myEnd, {}, {}});
  }
  Block& block = myBlocks.back();
  block.bytes.append(prefix).append(text);
  block.ends.push_back(static_cast<std::uint32_t>(block.bytes.size()));
  myBytes += prefix.size() + text.size();
  ++myEnd;
}

void StatusLog::Clear() {
  *this = {};
}

std::string_view StatusLog::Line(std::size_t number) const {
  assert(number < Count());
  const auto startsBehind = [](std::size_t line, const Block& other) { return line < other.begin; };
  const auto behind =
      std::upper_bound(myBlocks.begin(), myBlocks.end(), myBegin + number, startsBehind);
  const Block& block = *std::prev(behind);
  const std::size_t index = myBegin + number - block.begin;
  const std::size_t begin = index == 0 ? 0 : block.ends[index - 1];
  return std::string_view(block.bytes).substr(begin, block.ends[index] - begin);
}

std::size_t StatusLog::LinesOver(std::size_t bytes) const {
  std::size_t lines = 0;
  std::size_t left = myBytes;
  for (const Block& block : myBlocks) {
    if (left <= bytes) break;
    left -= block.bytes.size();
    lines += block.ends.size();
  }
  return lines;
}

void StatusLog::DropOldest(std::size_t lines) {
  myBegin += lines;
  while (!myBlocks.empty() && myBlocks.front().begin < myBegin) {
    myBytes -= myBlocks.front().bytes.size();
    myBlocks.pop_front();
  }
}

}  // namespace corvane
