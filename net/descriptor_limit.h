#pragma once

namespace corvane {

// Raises the number of descriptors that the process may have open to the most that the system
// allows it, since every connected client takes one, and has the system make room for them. To be
// called before the process has a second thread.
void RaiseDescriptorLimit();

}  // namespace corvane
