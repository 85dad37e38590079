#pragma once

#include <cstddef>
#include <string_view>

#include "buffers/buffer_pool.h"

namespace corvane {

// A queue of bytes, appended at the end and consumed from the front. The bytes are contiguous.
// Consuming moves nothing; the rest is moved to the front only when an append finds no room behind
// it and at least half of the buffer was consumed, so the cost per byte is constant. Borrows its
// pool and holds a buffer only while there are bytes.
class ByteQueue {
 public:
  explicit ByteQueue(BufferPool& pool) : myPool(&pool) {}
  ~ByteQueue() { Clear(); }
  ByteQueue(ByteQueue&& other) noexcept;
  ByteQueue& operator=(ByteQueue&& other) noexcept;

  bool IsEmpty() const { return myBegin == myEnd; }
  std::size_t Size() const { return myEnd - myBegin; }
  // Bytes of memory held.
  std::size_t Capacity() const { return myBuffer.capacity; }
  // Valid until the next change.
  std::string_view Bytes() const { return {myBuffer.bytes.get() + myBegin, Size()}; }

  // Both return false and change nothing if there is no memory.
  [[nodiscard]] bool Append(std::string_view bytes);
  // Moves all bytes of the other queue to the end of this one; copies nothing into an empty queue.
  [[nodiscard]] bool TakeAll(ByteQueue& other);
  // Drops so many bytes (at most Size()) from the front.
  void Consume(std::size_t count);
  // Keeps only so many bytes (at most Size()) from the front.
  void Truncate(std::size_t count);
  void Clear();

 private:
  bool MakeRoom(std::size_t count);

  BufferPool* myPool;
  BufferPool::Buffer myBuffer;
  std::size_t myBegin = 0;
  std::size_t myEnd = 0;
  std::size_t myUsualCapacity = 0;
};

}  // namespace corvane
