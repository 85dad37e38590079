#pragma once

#include <cstddef>
#include <span>
#include <string_view>
#include <vector>

#include "buffers/block.h"

namespace corvane {

// The unsent output of a connection: slices of blocks, in order. Growing moves no bytes, and bytes
// for many connections are in memory once. Borrows its pool and holds memory of it only while there
// are bytes.
class OutputQueue {
 public:
  static constexpr std::size_t kLarge = std::size_t{1} << 20;

  explicit OutputQueue(BufferPool& pool) : myWriter(pool) {}

  bool IsEmpty() const { return mySize == 0; }
  std::size_t Size() const { return mySize; }
  // The same without large messages, of kLarge bytes and more.
  std::size_t SizeOfSmall() const { return mySize - myLargeSize; }

  // Adds a copy of the bytes. Returns false if there is no memory for all of them.
  [[nodiscard]] bool Append(std::string_view bytes);
  // Adds the slice itself if it is long enough to be worth the bookkeeping, else a copy.
  [[nodiscard]] bool Append(const SharedBytes& slice);

  // Fills `pieces` with the first bytes, as far as it has room. Valid until the next change.
  std::span<const std::string_view> First(std::span<std::string_view> pieces) const;
  // Drops so many bytes (at most Size()) from the front.
  void Consume(std::size_t count);
  void Clear();

 private:
  // A large message has a block to itself.
  static bool IsOfLarge(const SharedBytes& slice) { return slice.block->Used() >= kLarge; }
  bool ContinuesLast(const SharedBytes& slice) const;
  void Push(const SharedBytes& slice);

  std::vector<SharedBytes> mySlices;
  std::size_t myFirst = 0;  // index of the first slice with bytes
  std::size_t mySize = 0;
  std::size_t myLargeSize = 0;  // the part in large messages
  BlockWriter myWriter;         // for copies
};

}  // namespace corvane
