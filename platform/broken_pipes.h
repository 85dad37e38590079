#pragma once

namespace corvane {

// From now on a write to a pipe or socket without a reader fails instead of ending the program.
void IgnoreBrokenPipes();

}  // namespace corvane
