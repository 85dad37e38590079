#include <cstdio>

#include "viewer/tell_caller.h"

namespace corvane::viewer {

void TellCaller(const QString& text, int exitCode) {
  std::fprintf(exitCode == 0 ? stdout : stderr, "%s\n", qUtf8Printable(text));
}

}  // namespace corvane::viewer
