#include <cstdlib>
#include <windows.h>

#include "control/ctl/console_text.h"

namespace corvane::ctl {

void PrintUtf8() {
  // The setting belongs to the console and outlives the program; 0 without a console.
  static const UINT before = GetConsoleOutputCP();
  if (before == 0 || !SetConsoleOutputCP(CP_UTF8)) return;
  std::atexit([] { SetConsoleOutputCP(before); });
}

}  // namespace corvane::ctl
