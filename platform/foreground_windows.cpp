#include <windows.h>

#include "platform/foreground.h"

namespace corvane {

void LetOthersComeToFront() {
  AllowSetForegroundWindow(ASFW_ANY);
}

}  // namespace corvane
