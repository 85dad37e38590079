#include "platform/broken_pipes.h"

namespace corvane {

// As it is here anyway.
void IgnoreBrokenPipes() {}

}  // namespace corvane
