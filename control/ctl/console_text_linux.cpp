#include "control/ctl/console_text.h"

namespace corvane::ctl {

// Terminals do so by themselves.
void PrintUtf8() {}

}  // namespace corvane::ctl
