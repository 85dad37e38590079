#include <malloc.h>

#include "app/large_memory.h"

namespace corvane {
namespace {

constexpr int kLarge = 1 << 20;

}  // namespace

void ReturnLargeMemory() {
  // The library's own threshold grows with the pieces that are freed, up to 32 MiB, and what is
  // below it may stay in a heap that somebody else's piece keeps from shrinking.
  mallopt(M_MMAP_THRESHOLD, kLarge);
}

}  // namespace corvane
