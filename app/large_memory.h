#pragma once

namespace corvane {

// From now on memory that was had in one large piece goes back to the system as soon as it is
// freed, and grows without being copied.
void ReturnLargeMemory();

}  // namespace corvane
