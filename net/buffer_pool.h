#pragma once

#include <cstddef>
#include <memory>
#include <vector>

namespace corvane {

// Memory for byte queues. A connection holds a buffer only while bytes wait in it, so an idle one
// costs nothing; buffers given back serve the next queue without a call of the allocator.
class BufferPool {
 public:
  struct Buffer {
    std::unique_ptr<char[]> bytes;
    std::size_t capacity = 0;
  };

  static constexpr std::size_t kSmallest = 4096;

  // A buffer of at least this capacity; the least is kSmallest.
  Buffer Take(std::size_t capacity);
  // Keeps the buffer for later; frees it when it is large or enough are kept.
  void GiveBack(Buffer buffer);

 private:
  std::vector<Buffer> mySpares;
};

}  // namespace corvane
