#include "platform/foreground.h"

namespace corvane {

void LetOthersComeToFront() {}

}  // namespace corvane
