#pragma once

#include <cstddef>
#include <span>
#include <string_view>
#include <vector>

#include "buffers/block.h"

namespace corvane {

// What a connection was given to send and has not sent yet: slices of blocks, in order. Growing
// moves nothing, however much there is, and what many connections were given stands in memory once.
// Holds memory of the pool only while there are bytes.
class OutputQueue {
 public:
  static constexpr std::size_t kLarge = std::size_t{1} << 20;

  explicit OutputQueue(BufferPool& pool) : myWriter(pool) {}

  bool IsEmpty() const { return mySize == 0; }
  std::size_t Size() const { return mySize; }
  // The same without what is left of messages of kLarge bytes and more.
  std::size_t SizeOfSmall() const { return mySize - myLargeSize; }

  // Adds a copy of the bytes. False when there is no memory for all of them.
  [[nodiscard]] bool Append(std::string_view bytes);
  // Adds the slice: itself where that is worth its bookkeeping, else a copy.
  [[nodiscard]] bool Append(const Slice& slice);

  // Its first bytes, as many pieces as there is room for. Valid until the next change.
  std::span<const std::string_view> First(std::span<std::string_view> pieces) const;
  // Drops so many bytes (at most Size()) from the front.
  void Consume(std::size_t count);
  void Clear();

 private:
  // A large message has a block of its own.
  static bool IsOfLarge(const Slice& slice) { return slice.block->Used() >= kLarge; }
  bool ContinuesLast(const Slice& slice) const;
  void Push(const Slice& slice);

  std::vector<Slice> mySlices;
  std::size_t myFirst = 0;  // of the slices that are left
  std::size_t mySize = 0;
  std::size_t myLargeSize = 0;  // of it, in large messages
  BlockWriter myWriter;         // of copies
};

}  // namespace corvane
