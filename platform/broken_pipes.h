#pragma once

namespace corvane {

// From now on a write to a pipe or socket whose reader is gone fails and does not end the program.
void IgnoreBrokenPipes();

}  // namespace corvane
