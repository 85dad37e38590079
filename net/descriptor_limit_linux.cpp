#include <algorithm>
#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include "net/descriptor_limit.h"

namespace corvane {
namespace {

constexpr rlim_t kMaxDescriptors = 128 * 1024;  // a megabyte of the kernel's memory
// Descriptors kept for the rest of the program, but at most a quarter of the limit.
constexpr rlim_t kSpareDescriptors = 32;
constexpr rlim_t kSpareShare = 4;

// The kernel's table of descriptors doubles as it fills. In a process with threads each doubling
// stops the relay for tens of milliseconds; before there are threads it takes no time.
void MakeRoomFor(rlim_t descriptors) {
  const int last = static_cast<int>(std::min(descriptors, kMaxDescriptors)) - 1;
  const int highest = fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, last);
  if (highest >= 0) close(highest);
}

}  // namespace

void RaiseDescriptorLimit() {
  rlimit limit = {};
  if (getrlimit(RLIMIT_NOFILE, &limit) != 0) return;
  limit.rlim_cur = limit.rlim_max;
  if (setrlimit(RLIMIT_NOFILE, &limit) == 0) MakeRoomFor(limit.rlim_cur);
}

bool HasSpareDescriptors(os::SocketHandle highest) {
  rlimit limit = {};
  if (getrlimit(RLIMIT_NOFILE, &limit) != 0) return true;
  const rlim_t spare = std::min(kSpareDescriptors, limit.rlim_cur / kSpareShare);
  // The system assigns the lowest free number, so the highest one usually decides without a call.
  if (static_cast<rlim_t>(highest + 1) + 2 * spare < limit.rlim_cur) return true;
  const int next = fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 0);
  if (next < 0) return false;
  close(next);
  return static_cast<rlim_t>(next) + spare < limit.rlim_cur;
}

}  // namespace corvane
