#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <memory>
#include <vector>

namespace corvane {

// Memory for byte queues. A connection holds a buffer only while bytes wait in it, so an idle one
// costs nothing; small buffers that are given back serve the next queue without a call of the
// allocator. What is handed out together is bounded, so that peers who never finish a message
// cannot take all of the machine's memory.
class BufferPool {
 public:
  struct Buffer {
    std::unique_ptr<char[]> bytes;
    std::size_t capacity = 0;
  };

  static constexpr std::size_t kSmallest = 4096;
  static constexpr std::size_t kLargestKept = 64 * 1024;
  static constexpr std::size_t kDefaultLimit = std::size_t{2} << 30;

  explicit BufferPool(std::size_t limit = kDefaultLimit) : myLimit(limit) {}

  // A buffer of at least this capacity, rounded up to a power of two; one of capacity 0 when there
  // is no memory for it.
  Buffer Take(std::size_t capacity);
  void GiveBack(Buffer buffer);

  // Bytes of all buffers that are handed out.
  std::size_t HandedOut() const { return myHandedOut; }

 private:
  static constexpr std::size_t kKeptSizes =
      std::bit_width(kLargestKept) - std::bit_width(kSmallest) + 1;

  std::array<std::vector<Buffer>, kKeptSizes> mySpares;
  std::size_t myLimit;
  std::size_t myHandedOut = 0;
};

}  // namespace corvane
