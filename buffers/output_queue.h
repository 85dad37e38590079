#pragma once

#include <cstddef>
#include <span>
#include <string_view>
#include <vector>

#include "buffers/block.h"

namespace corvane {

// The unsent output of a connection: pieces of shared blocks, in order. Growing moves no bytes, and
// bytes for many connections are in memory once. Borrows its pool and holds memory of it only while
// there are bytes.
class OutputQueue {
 public:
  // Bytes from which on a message is large: it has a block to itself and is counted separately.
  static constexpr std::size_t kLarge = std::size_t{1} << 20;

  explicit OutputQueue(BufferPool& pool) : myWriter(pool) {}

  bool IsEmpty() const { return mySize == 0; }
  std::size_t Size() const { return mySize; }
  // The same without large messages.
  std::size_t SizeOfSmall() const { return mySize - myLargeSize; }

  // Adds a copy of the bytes. Returns false if memory runs out; part of them may be added then.
  [[nodiscard]] bool Append(std::string_view bytes);
  // Adds a reference to the bytes if they are long enough to be worth one, else a copy. Returns
  // false as above.
  [[nodiscard]] bool Append(const SharedBytes& piece);

  // Fills `pieces` from its start with views of the first bytes and returns the views that it
  // filled. They are valid until the next change.
  std::span<const std::string_view> First(std::span<std::string_view> pieces) const;
  // Drops so many bytes (at most Size()) from the front.
  void Consume(std::size_t count);
  void Clear();

 private:
  // A large message has a block to itself.
  static bool IsOfLarge(const SharedBytes& piece) { return piece.block->Used() >= kLarge; }
  bool ContinuesLast(const SharedBytes& piece) const;
  void Push(const SharedBytes& piece);

  std::vector<SharedBytes> myPieces;
  std::size_t myFirst = 0;  // index of the first piece with bytes
  std::size_t mySize = 0;
  std::size_t myLargeSize = 0;  // the part in large messages
  BlockWriter myWriter;         // for copies
};

}  // namespace corvane
