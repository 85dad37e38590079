#include <fcntl.h>
#include <unistd.h>

#include "framework/standard_streams.h"

namespace corvane {

void OpenStandardStreams() {
  // The lowest number that is free is given out first.
  int opened = -1;
  do {
    opened = open("/dev/null", O_RDWR);
  } while (opened >= 0 && opened <= STDERR_FILENO);
  if (opened >= 0) close(opened);
}

}  // namespace corvane
