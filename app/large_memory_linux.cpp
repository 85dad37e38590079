#include <malloc.h>

#include "app/large_memory.h"

namespace corvane {
namespace {

constexpr int kLarge = 1 << 20;

}  // namespace

void ReturnLargeMemory() {
  // The C library's own threshold rises to the largest block freed, up to 32 MiB. Blocks below it
  // come from the heap, which cannot shrink while a small block remains at its end.
  mallopt(M_MMAP_THRESHOLD, kLarge);
}

}  // namespace corvane
