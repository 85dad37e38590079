#include "tests/support/leak_counting.h"

// NOLINTBEGIN(bugprone-reserved-identifier)
extern "C" __attribute__((weak)) void __lsan_disable();
extern "C" __attribute__((weak)) void __lsan_enable();
// NOLINTEND(bugprone-reserved-identifier)

namespace corvane {

void CountLeaks(bool on) {
  const auto set = on ? __lsan_enable : __lsan_disable;
  if (set != nullptr) set();
}

}  // namespace corvane
