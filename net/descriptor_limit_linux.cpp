#include <sys/resource.h>

#include "net/descriptor_limit.h"

namespace corvane {

void RaiseDescriptorLimit() {
  rlimit limit = {};
  if (getrlimit(RLIMIT_NOFILE, &limit) != 0) return;
  limit.rlim_cur = limit.rlim_max;
  setrlimit(RLIMIT_NOFILE, &limit);
}

}  // namespace corvane
