#include <fstream>
#include <unistd.h>

#include "control/process_memory.h"

namespace corvane {

std::uint64_t ProcessMemory() {
  std::ifstream pages("/proc/self/statm");
  std::uint64_t all = 0;
  std::uint64_t resident = 0;
  pages >> all >> resident;
  return resident * static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
}

}  // namespace corvane
