#pragma once

namespace corvane {

// From now on, allocations of 1 MiB and more return to the system as soon as they are freed, and
// grow without a copy.
void ReturnLargeMemory();

}  // namespace corvane
