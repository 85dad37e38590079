#include <windows.h>

// Must follow windows.h.
#include <psapi.h>

#include "control/process_resources.h"

namespace corvane {

std::uint64_t ProcessMemory() {
  PROCESS_MEMORY_COUNTERS counters{};
  counters.cb = sizeof counters;
  if (!K32GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof counters)) return 0;
  return counters.WorkingSetSize;
}

std::uint64_t OpenDescriptors() {
  DWORD count = 0;
  return GetProcessHandleCount(GetCurrentProcess(), &count) ? count : 0;
}

}  // namespace corvane
