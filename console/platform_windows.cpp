#include "console/platform.h"

namespace corvane {

// There is always a desktop.
void ChoosePlatform(int, const char* const*) {}

}  // namespace corvane
