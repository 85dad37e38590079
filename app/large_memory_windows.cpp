#include "app/large_memory.h"

namespace corvane {

// As it is here anyway.
void ReturnLargeMemory() {}

}  // namespace corvane
