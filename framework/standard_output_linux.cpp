#include <algorithm>
#include <cerrno>
#include <climits>
#include <poll.h>
#include <unistd.h>

#include "framework/standard_output.h"

namespace corvane {

namespace {

bool IsReady() {
  pollfd output{STDOUT_FILENO, POLLOUT, 0};
  return poll(&output, 1, 0) > 0;
}

bool IsPassing(int error) {
  return error == EAGAIN || error == EINTR || error == ENOSPC || error == EDQUOT;
}

}  // namespace

void StandardOutput::WriteKept() {
  std::size_t written = 0;
  // A pipe that is ready takes PIPE_BUF bytes without blocking, though not a byte more. Its
  // descriptor stays a blocking one, since that would change it for every program that shares it.
  while (written < myKept.size() && IsReady()) {
    const std::size_t count = std::min<std::size_t>(myKept.size() - written, PIPE_BUF);
    const ssize_t result = write(STDOUT_FILENO, myKept.data() + written, count);
    if (result < 0) {
      myClosed = !IsPassing(errno);
      break;
    }
    written += static_cast<std::size_t>(result);
  }
  myKept.erase(0, written);
  if (myClosed) myKept = {};
}

}  // namespace corvane
