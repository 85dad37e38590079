#include <cerrno>
#include <cstdio>

#include "platform/caller.h"

namespace corvane {

void AnswerOnConsole(const CallerAnswer& answer) {
  if (answer.exitCode == 0) {
    std::printf("%s\n", qUtf8Printable(answer.text));
  } else {
    std::fprintf(stderr, "%s: %s\n", program_invocation_short_name, qUtf8Printable(answer.text));
  }
}

}  // namespace corvane
