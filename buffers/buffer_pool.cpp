#include "buffers/buffer_pool.h"

#include <algorithm>
#include <bit>
#include <cassert>
#include <cstring>
#include <utility>

namespace corvane {
namespace {

// Of the spares of one size.
constexpr std::size_t kMaxKeptBytes = std::size_t{8} << 20;

std::size_t Rounded(std::size_t capacity) {
  if (capacity > BufferPool::kMaxKeptCapacity) return capacity;
  return std::bit_ceil(std::max(capacity, BufferPool::kMinCapacity));
}

bool IsKept(std::size_t capacity) {
  return capacity <= BufferPool::kMaxKeptCapacity;
}

// The index of a kept capacity.
std::size_t SizeClass(std::size_t capacity) {
  return static_cast<std::size_t>(std::bit_width(capacity) -
                                  std::bit_width(BufferPool::kMinCapacity));
}

}  // namespace

BufferPool::Buffer BufferPool::Take(std::size_t capacity) {
  const std::size_t rounded = Rounded(capacity);
  Buffer buffer;
  if (IsKept(rounded) && !mySpares[SizeClass(rounded)].empty()) {
    auto& spares = mySpares[SizeClass(rounded)];
    buffer = std::move(spares.back());
    spares.pop_back();
  } else {
    buffer.bytes.reset(static_cast<char*>(std::malloc(rounded)));
    if (buffer.bytes == nullptr) return {};
    buffer.capacity = rounded;
  }
  myInUse += rounded;
  return buffer;
}

bool BufferPool::Grow(Buffer& buffer, std::size_t capacity) {
  assert(capacity > buffer.capacity);
  if (IsKept(buffer.capacity)) {
    Buffer larger = Take(capacity);
    if (larger.capacity == 0) return false;
    if (buffer.capacity != 0) {
      std::memcpy(larger.bytes.get(), buffer.bytes.get(), buffer.capacity);
      Release(std::move(buffer));
    }
    buffer = std::move(larger);
    return true;
  }
  char* const grown = static_cast<char*>(std::realloc(buffer.bytes.get(), capacity));
  if (grown == nullptr) return false;
  static_cast<void>(buffer.bytes.release());
  buffer.bytes.reset(grown);
  myInUse += capacity - std::exchange(buffer.capacity, capacity);
  return true;
}

void BufferPool::Release(Buffer buffer) {
  myInUse -= buffer.capacity;
  if (!IsKept(buffer.capacity)) return;
  auto& spares = mySpares[SizeClass(buffer.capacity)];
  if (spares.size() < kMaxKeptBytes / buffer.capacity) spares.push_back(std::move(buffer));
}

}  // namespace corvane
