#pragma once

#include <cstdint>

namespace corvane {

// The memory of this process that is in the machine's, in bytes; 0 where the system does not tell.
std::uint64_t ProcessMemory();

}  // namespace corvane
