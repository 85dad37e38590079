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

  // A block with room for at least so many bytes; none if there is no memory.
  static Ref Make(BufferPool& pool, std::size_t room);

  Block(const Block&) = delete;
  Block& operator=(const Block&) = delete;

  std::size_t Used() const { return myUsed; }
  std::size_t Room() const { return myRoom - myUsed; }
  // At most Room() bytes.
  void Append(std::string_view bytes);
  std::string_view Bytes() const { return {Memory(), myUsed}; }

  // Whether there is only one reference, whose holder may then rewind and fill the block again.
  bool IsUnshared() const { return myReferences == 1; }
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

// Copies the bytes to a new block; the slice is empty if there is no memory.
SharedBytes CopyToBlock(BufferPool& pool, std::string_view bytes);

// Appends bytes to blocks and returns slices of them. Starts a new, larger block when the last one
// has no room; fills the last one again when no slice refers to it. Borrows its pool.
class BlockWriter {
 public:
  // Longer bytes get a block to themselves, which the pool does not keep.
  static constexpr std::size_t kMaxPooled = BufferPool::kMaxKeptCapacity - sizeof(Block);

  explicit BlockWriter(BufferPool& pool) : myPool(&pool) {}

  // A copy of the bytes in one piece; empty if there is no memory.
  SharedBytes Append(std::string_view bytes);
  // Releases the last block.
  void Reset() { myBlock.Reset(); }

 private:
  BufferPool* myPool;
  Block::Ref myBlock;
};

}  // namespace corvane
