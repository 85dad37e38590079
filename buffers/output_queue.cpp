#include "buffers/output_queue.h"

#include <algorithm>
#include <cassert>

namespace corvane {
namespace {

// Behind other bytes, a shorter slice is copied: that costs less than sending one more piece, and
// a long list of slices would keep many blocks alive.
constexpr std::size_t kWorthSharing = 512;
constexpr std::size_t kMaxKeptSlices = 16;  // room for the next ones

}  // namespace

bool OutputQueue::Append(std::string_view bytes) {
  const std::size_t longest = bytes.size() < kLarge ? BlockWriter::kMaxPooled : bytes.size();
  while (!bytes.empty()) {
    const SharedBytes copy = myWriter.Append(bytes.substr(0, longest));
    if (copy.Size() == 0) return false;
    Push(copy);
    bytes.remove_prefix(copy.Size());
  }
  return true;
}

bool OutputQueue::Append(const SharedBytes& slice) {
  const bool isWorthIt = IsEmpty() || slice.Size() >= kWorthSharing || ContinuesLast(slice);
  if (!isWorthIt) return Append(slice.Bytes());
  Push(slice);
  return true;
}

bool OutputQueue::ContinuesLast(const SharedBytes& slice) const {
  return !IsEmpty() && mySlices.back().block == slice.block && mySlices.back().end == slice.begin;
}

void OutputQueue::Push(const SharedBytes& slice) {
  if (ContinuesLast(slice)) {
    mySlices.back().end = slice.end;
  } else {
    mySlices.push_back(slice);
  }
  mySize += slice.Size();
  if (IsOfLarge(slice)) myLargeSize += slice.Size();
}

std::span<const std::string_view> OutputQueue::First(std::span<std::string_view> pieces) const {
  const std::size_t count = std::min(pieces.size(), mySlices.size() - myFirst);
  for (std::size_t i = 0; i < count; ++i)
    pieces[i] = mySlices[myFirst + i].Bytes();
  return pieces.first(count);
}

void OutputQueue::Consume(std::size_t count) {
  assert(count <= mySize);
  if (count == mySize) return Clear();
  mySize -= count;
  while (count > 0) {
    SharedBytes& first = mySlices[myFirst];
    const std::size_t taken = std::min(count, first.Size());
    if (IsOfLarge(first)) myLargeSize -= taken;
    first.begin += taken;
    count -= taken;
    if (first.Size() > 0) break;
    first = {};
    ++myFirst;
  }
  if (myFirst > mySlices.size() / 2) {
    mySlices.erase(mySlices.begin(), mySlices.begin() + static_cast<std::ptrdiff_t>(myFirst));
    myFirst = 0;
  }
}

void OutputQueue::Clear() {
  mySlices.clear();
  if (mySlices.capacity() > kMaxKeptSlices) mySlices.shrink_to_fit();
  myFirst = 0;
  mySize = 0;
  myLargeSize = 0;
  myWriter.Reset();
}

}  // namespace corvane
