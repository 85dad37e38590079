#include "buffers/block.h"

#include <algorithm>
#include <cassert>
#include <cstring>
#include <new>

namespace corvane {

Block::Ref Block::Make(BufferPool& pool, std::size_t room) {
  BufferPool::Buffer buffer = pool.Take(sizeof(Block) + room);
  if (buffer.capacity == 0) return {};
  void* const place = buffer.bytes.get();
  return Ref(*new (place) Block(pool, std::move(buffer)));
}

Block::Block(BufferPool& pool, BufferPool::Buffer buffer)
    : myPool(&pool), myBuffer(std::move(buffer)), myRoom(myBuffer.capacity - sizeof(Block)) {}

void Block::Destroy(Block& block) {
  BufferPool& pool = *block.myPool;
  BufferPool::Buffer buffer = std::move(block.myBuffer);
  block.~Block();
  pool.Release(std::move(buffer));
}

void Block::Append(std::string_view bytes) {
  assert(bytes.size() <= Room());
  std::memcpy(Memory() + myUsed, bytes.data(), bytes.size());
  myUsed += bytes.size();
}

SharedBytes CopyToBlock(BufferPool& pool, std::string_view bytes) {
  const Block::Ref block = Block::Make(pool, bytes.size());
  if (!block) return {};
  block->Append(bytes);
  return {block, 0, bytes.size()};
}

SharedBytes BlockWriter::Append(std::string_view bytes) {
  if (bytes.size() > kMaxPooled) return CopyToBlock(*myPool, bytes);
  if (myBlock && myBlock->IsUnshared()) myBlock->Rewind();
  if (!myBlock || myBlock->Room() < bytes.size()) {
    // Larger each time: a peer is behind and will hold many.
    const std::size_t twice = myBlock ? 2 * (myBlock->Used() + myBlock->Room()) : 0;
    myBlock = Block::Make(*myPool, std::max(bytes.size(), std::min(twice, kMaxPooled)));
    if (!myBlock) return {};
  }
  const std::size_t begin = myBlock->Used();
  myBlock->Append(bytes);
  return {myBlock, begin, myBlock->Used()};
}

}  // namespace corvane
