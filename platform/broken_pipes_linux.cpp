#include <csignal>

#include "platform/broken_pipes.h"

namespace corvane {

void IgnoreBrokenPipes() {
  std::signal(SIGPIPE, SIG_IGN);
}

}  // namespace corvane
