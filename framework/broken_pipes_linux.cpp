#include <csignal>

#include "framework/broken_pipes.h"

namespace corvane {

void IgnoreBrokenPipes() {
  std::signal(SIGPIPE, SIG_IGN);
}

}  // namespace corvane
