#pragma once

#include <cstdint>

namespace corvane {

// The resident memory of this process, in bytes; 0 if unknown.
std::uint64_t ProcessMemory();

}  // namespace corvane
