#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>
#include <unistd.h>

#include "control/process_resources.h"

namespace corvane {

std::uint64_t ProcessMemory() {
  std::ifstream pages("/proc/self/statm");
  std::uint64_t all = 0;
  std::uint64_t resident = 0;
  pages >> all >> resident;
  return resident * static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
}

std::uint64_t OpenDescriptors() {
  std::error_code error;
  const std::filesystem::directory_iterator descriptors("/proc/self/fd", error);
  // The iterator has one, too.
  return error ? 0 : static_cast<std::uint64_t>(std::distance(begin(descriptors), {})) - 1;
}

}  // namespace corvane
