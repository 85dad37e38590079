#pragma once

namespace corvane {

// Keeps from standard error what Qt says about things that we neither chose nor need, such as the
// runtime folder of a user who has not logged in. To be called before the application object is
// made.
void DropQtNoise();

}  // namespace corvane
