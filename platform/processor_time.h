#pragma once

#include <chrono>

namespace corvane {

// The processor time that the calling thread has used. On Windows it grows in steps of about 16 ms.
std::chrono::nanoseconds ProcessorTime();

}  // namespace corvane
