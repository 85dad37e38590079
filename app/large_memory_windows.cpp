#include "app/large_memory.h"

namespace corvane {

// Windows does so by itself.
void ReturnLargeMemory() {}

}  // namespace corvane
