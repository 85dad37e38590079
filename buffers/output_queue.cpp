#include "buffers/output_queue.h"

#include <algorithm>
#include <cassert>

namespace corvane {
namespace {

// Behind other bytes, a shorter piece is copied: that costs less than sending one more piece, and
// a long list of pieces would keep many blocks alive.
constexpr std::size_t kWorthSharing = 512;
constexpr std::size_t kMaxKeptPieces = 16;  // room for the next ones

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

bool OutputQueue::Append(const SharedBytes& piece) {
  const bool isWorthIt = IsEmpty() || piece.Size() >= kWorthSharing || ContinuesLast(piece);
  if (!isWorthIt) return Append(piece.Bytes());
  Push(piece);
  return true;
}

bool OutputQueue::ContinuesLast(const SharedBytes& piece) const {
  return !IsEmpty() && myPieces.back().block == piece.block && myPieces.back().end == piece.begin;
}

void OutputQueue::Push(const SharedBytes& piece) {
  if (ContinuesLast(piece)) {
    myPieces.back().end = piece.end;
  } else {
    myPieces.push_back(piece);
  }
  mySize += piece.Size();
  if (IsOfLarge(piece)) myLargeSize += piece.Size();
}

std::span<const std::string_view> OutputQueue::First(std::span<std::string_view> pieces) const {
  const std::size_t count = std::min(pieces.size(), myPieces.size() - myFirst);
  for (std::size_t i = 0; i < count; ++i)
    pieces[i] = myPieces[myFirst + i].Bytes();
  return pieces.first(count);
}

void OutputQueue::Consume(std::size_t count) {
  assert(count <= mySize);
  if (count == mySize) return Clear();
  mySize -= count;
  while (count > 0) {
    SharedBytes& first = myPieces[myFirst];
    const std::size_t taken = std::min(count, first.Size());
    if (IsOfLarge(first)) myLargeSize -= taken;
    first.begin += taken;
    count -= taken;
    if (first.Size() > 0) break;
    first = {};
    ++myFirst;
  }
  if (myFirst > myPieces.size() / 2) {
    myPieces.erase(myPieces.begin(), myPieces.begin() + static_cast<std::ptrdiff_t>(myFirst));
    myFirst = 0;
  }
}

void OutputQueue::Clear() {
  myPieces.clear();
  if (myPieces.capacity() > kMaxKeptPieces) myPieces.shrink_to_fit();
  myFirst = 0;
  mySize = 0;
  myLargeSize = 0;
  myWriter.Reset();
}

}  // namespace corvane
