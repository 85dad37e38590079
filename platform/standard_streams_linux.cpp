#include <algorithm>
#include <cerrno>
#include <climits>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include "platform/standard_streams.h"

namespace corvane {

namespace {

bool IsReady(int descriptor) {
  pollfd stream{descriptor, POLLOUT, 0};
  return poll(&stream, 1, 0) > 0;
}

bool IsPassing(int error) {
  return error == EAGAIN || error == EINTR || error == ENOSPC || error == EDQUOT;
}

}  // namespace

void OpenStandardStreams() {
  // The lowest free number is assigned first.
  int opened = -1;
  do {
    opened = open("/dev/null", O_RDWR);
  } while (opened >= 0 && opened <= STDERR_FILENO);
  if (opened >= 0) close(opened);
}

StreamWriting WriteWithoutWaiting(StandardStream stream, std::string_view bytes) {
  const int descriptor = stream == StandardStream::Output ? STDOUT_FILENO : STDERR_FILENO;
  StreamWriting writing;
  // A pipe that is ready takes PIPE_BUF bytes without blocking, but no more. The descriptor stays
  // in blocking mode, since changing that would affect every program that shares it.
  while (writing.written < bytes.size() && IsReady(descriptor)) {
    const std::size_t count = std::min<std::size_t>(bytes.size() - writing.written, PIPE_BUF);
    const ssize_t result = write(descriptor, bytes.data() + writing.written, count);
    if (result < 0) {
      writing.isClosed = !IsPassing(errno);
      break;
    }
    writing.written += static_cast<std::size_t>(result);
  }
  return writing;
}

}  // namespace corvane
