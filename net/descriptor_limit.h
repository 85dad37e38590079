#pragma once

namespace corvane {

// Raises the number of descriptors that the process may have open to the most that the system
// allows it, since every connected client takes one.
void RaiseDescriptorLimit();

}  // namespace corvane
