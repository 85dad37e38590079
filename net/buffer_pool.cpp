#include "net/buffer_pool.h"

#include <algorithm>
#include <bit>
#include <new>
#include <utility>

namespace corvane {
namespace {

// Spares of each size, together.
constexpr std::size_t kMostKeptBytes = std::size_t{32} << 20;

// Which of the kept sizes a capacity is; any beyond them is not kept.
std::size_t SizeClass(std::size_t capacity) {
  return static_cast<std::size_t>(std::bit_width(capacity) - std::bit_width(BufferPool::kSmallest));
}

}  // namespace

BufferPool::Buffer BufferPool::Take(std::size_t capacity) {
  if (capacity > myLimit) return {};
  const std::size_t rounded = std::bit_ceil(std::max(capacity, kSmallest));
  if (myHandedOut + rounded > myLimit) return {};
  Buffer buffer;
  const std::size_t size = SizeClass(rounded);
  if (size < kKeptSizes && !mySpares[size].empty()) {
    buffer = std::move(mySpares[size].back());
    mySpares[size].pop_back();
  } else {
    buffer.bytes.reset(new (std::nothrow) char[rounded]);
    if (buffer.bytes == nullptr) return {};
    buffer.capacity = rounded;
  }
  myHandedOut += rounded;
  return buffer;
}

void BufferPool::GiveBack(Buffer buffer) {
  myHandedOut -= buffer.capacity;
  const std::size_t size = SizeClass(buffer.capacity);
  if (size >= kKeptSizes || mySpares[size].size() >= kMostKeptBytes / buffer.capacity) return;
  mySpares[size].push_back(std::move(buffer));
}

}  // namespace corvane
