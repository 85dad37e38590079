#include "platform/broken_pipes.h"

namespace corvane {

// Windows behaves like this anyway.
void IgnoreBrokenPipes() {}

}  // namespace corvane
