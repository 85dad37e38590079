#pragma once

#include <cstdio>
#include <cstdlib>

namespace corvane {

// Reports the expectation that does not hold, and aborts.
inline void Expect(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "fault: %s\n", what);
  std::abort();
}

}  // namespace corvane
