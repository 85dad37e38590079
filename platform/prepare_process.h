#pragma once

namespace corvane {

// Call it first in main. On Linux, a write to a pipe or socket without a reader then fails instead
// of ending the program, as on Windows. On Windows, threads that matched a regular expression then
// end without a fault.
void PrepareProcess();

}  // namespace corvane
