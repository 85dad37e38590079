#pragma once

#include <cstddef>
#include <string_view>
#include <utility>

#include "buffers/buffer_pool.h"

namespace corvane {

// Reference-counted memory that is filled from front to back and read by many: written bytes do not
// change. Lives as long as there is a reference to it; borrows its pool, which outlives it. For one
// thread.
class Block {
 public:
  // A reference, or none.
  class Ref {
   public:
    Ref() = default;
    ~Ref() { Reset(); }
    Ref(const Ref& other) : myBlock(other.myBlock) {
      if (myBlock != nullptr) ++myBlock->myReferences;
    }
    Ref(Ref&& other) noexcept : myBlock(std::exchange(other.myBlock, nullptr)) {}
    Ref& operator=(Ref other) noexcept {
      std::swap(myBlock, other.myBlock);
      return *this;
    }

    void Reset() {
      if (myBlock != nullptr && --myBlock->myReferences == 0) Destroy(*myBlock);
      myBlock = nullptr;
    }
    Block* operator->() const { return myBlock; }
    explicit operator bool() const { return myBlock != nullptr; }
    bool operator==(const Ref& other) const = default;

   private:
    friend class Block;
    explicit Ref(Block& block) : myBlock(&block) { ++block.myReferences; }

    Block* myBlock = nullptr;
  };

  // A new block with room for at least `room` bytes; none if there is no memory.
  static Ref Make(BufferPool& pool, std::size_t room);

  Block(const Block&) = delete;
  Block& operator=(const Block&) = delete;

  std::size_t Used() const { return myUsed; }
  std::size_t Room() const { return myRoom - myUsed; }
  // At most Room() bytes.
  void Append(std::string_view bytes);
  std::string_view Bytes() const { return {Memory(), myUsed}; }

  // Whether there is only one reference. Its holder may rewind the block and fill it again.
  bool IsUnshared() const { return myReferences == 1; }
  // Drops the bytes; only for a block that is not shared.
  void Rewind() { myUsed = 0; }

 private:
  Block(BufferPool& pool, BufferPool::Buffer buffer);
  ~Block() = default;
  static void Destroy(Block& block);
  // The bytes lie behind the block itself, in the same buffer.
  char* Memory() const { return myBuffer.bytes.get() + sizeof(Block); }

  BufferPool* myPool;
  BufferPool::Buffer myBuffer;
  std::size_t myRoom;
  std::size_t myUsed = 0;
  std::size_t myReferences = 0;
};

// A range of the bytes of a block, which it keeps alive.
struct SharedBytes {
  Block::Ref block;
  std::size_t begin = 0;
  std::size_t end = 0;

  std::size_t Size() const { return end - begin; }
  std::string_view Bytes() const { return block->Bytes().substr(begin, Size()); }
  SharedBytes SubRange(std::size_t from, std::size_t count) const {
    return {block, begin + from, begin + from + count};
  }
};

// Copies the bytes to a new block; the result is empty if there is no memory.
SharedBytes CopyToBlock(BufferPool& pool, std::string_view bytes);

// Copies bytes into blocks, one piece after the other, and returns references to the pieces. When
// the last block has no room, starts a new, larger one; when nothing refers to the last block any
// more, fills it again. Borrows its pool.
class BlockWriter {
 public:
  // A longer piece gets a block to itself, which the pool does not keep.
  static constexpr std::size_t kMaxPooled = BufferPool::kMaxKeptCapacity - sizeof(Block);

  explicit BlockWriter(BufferPool& pool) : myPool(&pool) {}

  // Copies the bytes into one block; the result is empty if there is no memory.
  SharedBytes Append(std::string_view bytes);
  // Releases the last block.
  void Reset() { myBlock.Reset(); }

 private:
  BufferPool* myPool;
  Block::Ref myBlock;
};

}  // namespace corvane
