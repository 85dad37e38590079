#pragma once

#include <cstddef>
#include <string_view>
#include <utility>

#include "buffers/buffer_pool.h"

namespace corvane {

// Memory that is filled from front to back and read by several: what was once written to it does
// not change. Lives as long as somebody refers to it; borrows its pool.
class Block {
 public:
  // A reference; may be to none.
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

  // A block with room for at least so many bytes; none when the system has no memory for it.
  static Ref Make(BufferPool& pool, std::size_t room);

  Block(const Block&) = delete;
  Block& operator=(const Block&) = delete;

  std::size_t Used() const { return myUsed; }
  std::size_t Room() const { return myRoom - myUsed; }
  // At most Room() bytes.
  void Append(std::string_view bytes);
  std::string_view Bytes() const { return {Memory(), myUsed}; }

  // Whether there is one reference alone, whose holder may then write it anew.
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

// Some of the bytes of a block, which they keep alive.
struct Slice {
  Block::Ref block;
  std::size_t begin = 0;
  std::size_t end = 0;

  std::size_t Size() const { return end - begin; }
  std::string_view Bytes() const { return block->Bytes().substr(begin, Size()); }
  Slice Part(std::size_t from, std::size_t count) const {
    return {block, begin + from, begin + from + count};
  }
};

// A block of its own for these bytes; of no bytes when the system has no memory for it.
Slice CopyToBlock(BufferPool& pool, std::string_view bytes);

// Appends to blocks and gives out what was appended. Begins a new block where the last has no room;
// writes the last one anew when nobody else refers to it.
class BlockWriter {
 public:
  // What is larger gets a block of its own.
  static constexpr std::size_t kLargestPooled = BufferPool::kLargestKept - sizeof(Block);

  explicit BlockWriter(BufferPool& pool) : myPool(&pool) {}

  // The bytes as one piece; of no bytes when the system has no memory for them.
  Slice Append(std::string_view bytes);
  // Lets go of the last block.
  void Reset() { myBlock.Reset(); }

 private:
  BufferPool* myPool;
  Block::Ref myBlock;
};

}  // namespace corvane
