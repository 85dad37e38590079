#include "net/buffer_pool.h"

#include <algorithm>
#include <bit>
#include <utility>

namespace corvane {
namespace {

constexpr std::size_t kLargestKept = 64 * 1024;
constexpr std::size_t kMostKept = 4096;

}  // namespace

BufferPool::Buffer BufferPool::Take(std::size_t capacity) {
  if (!mySpares.empty() && mySpares.back().capacity >= capacity) {
    Buffer buffer = std::move(mySpares.back());
    mySpares.pop_back();
    return buffer;
  }
  const std::size_t rounded = std::bit_ceil(std::max(capacity, kSmallest));
  return {std::unique_ptr<char[]>(new char[rounded]), rounded};
}

void BufferPool::GiveBack(Buffer buffer) {
  if (buffer.capacity > kLargestKept || mySpares.size() >= kMostKept) return;
  mySpares.push_back(std::move(buffer));
}

}  // namespace corvane
