#include "control/ctl/console_text.h"

namespace corvane::ctl {

// Terminals expect UTF-8 anyway.
void PrintUtf8() {}

}  // namespace corvane::ctl
