#pragma once

#include <chrono>

namespace corvane {

// The processor time that this thread has used: work counts, waiting does not. On Windows it grows
// in steps of about 16 ms.
std::chrono::nanoseconds ProcessorTime();

}  // namespace corvane
