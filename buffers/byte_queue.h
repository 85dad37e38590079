#pragma once

#include <cstddef>
#include <string_view>

#include "buffers/buffer_pool.h"

namespace corvane {

// Bytes in the order in which they came, appended at the end and consumed from the front. The
// bytes are contiguous. Consuming moves nothing; what is left is moved to the front only when an
// append finds no room behind it and at least half of the buffer was consumed, so the cost per
// byte is constant. Borrows its pool and holds a buffer only while there are bytes.
class ByteQueue {
 public:
  explicit ByteQueue(BufferPool& pool) : myPool(&pool) {}
  ~ByteQueue() { Clear(); }
  ByteQueue(ByteQueue&& other) noexcept;
  ByteQueue& operator=(ByteQueue&& other) noexcept;

  bool IsEmpty() const { return myBegin == myEnd; }
  std::size_t Size() const { return myEnd - myBegin; }
  // Bytes of memory that it holds.
  std::size_t Capacity() const { return myBuffer.capacity; }
  // Valid until the next change.
  std::string_view Bytes() const { return {myBuffer.bytes.get() + myBegin, Size()}; }

  // Both return false, and change nothing, when there is no memory left.
  [[nodiscard]] bool Append(std::string_view bytes);
  // Takes all bytes of the other queue, which is empty afterwards: no copy into an empty queue.
  [[nodiscard]] bool TakeAll(ByteQueue& other);
  // Drops so many bytes (at most Size()) from the front.
  void Consume(std::size_t count);
  // Drops everything behind the first so many bytes.
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
