#include <csignal>

#include "platform/prepare_process.h"

namespace corvane {

void PrepareProcess() {
  std::signal(SIGPIPE, SIG_IGN);
}

}  // namespace corvane
