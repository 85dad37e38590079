#include "platform/choose_platform.h"

namespace corvane {

// There is always a desktop.
bool ChoosePlatform(int, const char* const*) {
  return false;
}

}  // namespace corvane
