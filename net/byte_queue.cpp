#include "net/byte_queue.h"

#include <algorithm>
#include <cassert>
#include <cstring>
#include <utility>

namespace corvane {

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
  // Growing copies, so the next buffer begins with the size that this one needed.
  const std::size_t needed =
      used > myBuffer.capacity / 2 ? myBuffer.capacity : myBuffer.capacity / 2;
  myUsualCapacity = std::min(needed, BufferPool::kLargestKept);
  myPool->GiveBack(std::exchange(myBuffer, {}));
}

bool ByteQueue::MakeRoom(std::size_t count) {
  const std::size_t size = Size();
  const bool fits = size + count <= myBuffer.capacity;
  if (fits && myBegin >= myBuffer.capacity / 2) {
    std::memmove(myBuffer.bytes.get(), myBuffer.bytes.get() + myBegin, size);
  } else {
    // Twice the room also where moving the bytes would do, or a nearly full queue that is consumed
    // in small steps would be moved at each of them.
    BufferPool::Buffer larger =
        myPool->Take(std::max({size + count, 2 * myBuffer.capacity, myUsualCapacity}));
    if (larger.capacity == 0) larger = myPool->Take(size + count);
    if (larger.capacity == 0) return false;
    if (size != 0) std::memcpy(larger.bytes.get(), myBuffer.bytes.get() + myBegin, size);
    std::swap(myBuffer, larger);
    if (larger.capacity != 0) myPool->GiveBack(std::move(larger));
  }
  myBegin = 0;
  myEnd = size;
  return true;
}

}  // namespace corvane
