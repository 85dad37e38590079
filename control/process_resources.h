#pragma once

#include <cstdint>

namespace corvane {

// The resident memory of this process, in bytes; 0 if unknown.
std::uint64_t ProcessMemory();
// The number of descriptors (on Windows handles) that this process has open; 0 if unknown.
std::uint64_t OpenDescriptors();

}  // namespace corvane
