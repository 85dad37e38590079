#include "buffers/byte_queue.h"

#include <algorithm>
#include <cassert>
#include <cstring>
#include <utility>

namespace corvane {
namespace {

// Large buffers grow without a copy, so they grow by less.
constexpr std::size_t kLarge = std::size_t{1} << 20;

std::size_t NextCapacity(std::size_t capacity) {
  return capacity < kLarge ? 2 * capacity : capacity + capacity / 4;
}

}  // namespace

ByteQueue::ByteQueue(ByteQueue&& other) noexcept
    : myPool(other.myPool),
      myBuffer(std::exchange(other.myBuffer, {})),
      myBegin(std::exchange(other.myBegin, 0)),
      myEnd(std::exchange(other.myEnd, 0)) {}

ByteQueue& ByteQueue::operator=(ByteQueue&& other) noexcept {
  std::swap(myPool, other.myPool);
  std::swap(myBuffer, other.myBuffer);
  std::swap(myBegin, other.myBegin);
  std::swap(myEnd, other.myEnd);
  return *this;
}

bool ByteQueue::Append(std::string_view bytes) {
  if (bytes.empty()) return true;
  if (myBuffer.capacity - myEnd < bytes.size() && !MakeRoom(bytes.size())) return false;
  std::memcpy(myBuffer.bytes.get() + myEnd, bytes.data(), bytes.size());
  myEnd += bytes.size();
  return true;
}

bool ByteQueue::TakeAll(ByteQueue& other) {
  if (IsEmpty()) {
    std::swap(*this, other);
  } else if (!Append(other.Bytes())) {
    return false;
  }
  other.Clear();
  return true;
}

void ByteQueue::Consume(std::size_t count) {
  assert(count <= Size());
  myBegin += count;
  if (IsEmpty()) Clear();
}

void ByteQueue::Truncate(std::size_t count) {
  assert(count <= Size());
  myEnd = myBegin + count;
  if (IsEmpty()) Clear();
}

void ByteQueue::Clear() {
  const std::size_t used = std::exchange(myEnd, 0);
  myBegin = 0;
  if (myBuffer.capacity == 0) return;
  // Growing copies, so the next buffer starts with the size that this one needed.
  const std::size_t needed =
      used > myBuffer.capacity / 2 ? myBuffer.capacity : myBuffer.capacity / 2;
  myUsualCapacity = std::min(needed, BufferPool::kMaxKeptCapacity);
  myPool->Release(std::exchange(myBuffer, {}));
}

bool ByteQueue::MakeRoom(std::size_t count) {
  const std::size_t size = Size();
  const std::size_t needed = size + count;
  const bool isHalfConsumed = myBegin >= myBuffer.capacity / 2;
  if (myBegin != 0) std::memmove(myBuffer.bytes.get(), myBuffer.bytes.get() + myBegin, size);
  myBegin = 0;
  myEnd = size;
  const bool fits = needed <= myBuffer.capacity;
  if (fits && isHalfConsumed) return true;
  // Grow even if moving the bytes would do: a nearly full queue that is consumed in small steps
  // would be moved at each step.
  return myPool->Grow(myBuffer,
                      std::max({needed, NextCapacity(myBuffer.capacity), myUsualCapacity})) ||
         fits || myPool->Grow(myBuffer, needed);
}

}  // namespace corvane
