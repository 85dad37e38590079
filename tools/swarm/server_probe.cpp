#include "tools/swarm/server_probe.h"

#include <ctime>
#include <fstream>
#include <string>
#include <unistd.h>

namespace corvane::swarm {

std::optional<std::chrono::nanoseconds> ServerProbe::CpuTime() const {
  const auto now = WholeCpuTime();
  if (!now || !myCpuAtStart) return std::nullopt;
  return *now - *myCpuAtStart;
}

// The process's CPU clock; /proc/PID/stat has hundredths of a second only.
std::optional<std::chrono::nanoseconds> ServerProbe::WholeCpuTime() const {
  clockid_t clock{};
  timespec time{};
  if (clock_getcpuclockid(myPid, &clock) != 0 || clock_gettime(clock, &time) != 0) {
    return std::nullopt;
  }
  return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

std::optional<std::chrono::nanoseconds> ServerProbe::WaitTime() const {
  std::ifstream schedstat("/proc/" + std::to_string(myPid) + "/schedstat");
  std::int64_t ran = 0;
  std::int64_t waited = 0;
  if (!(schedstat >> ran >> waited)) return std::nullopt;
  return std::chrono::nanoseconds(waited);
}

std::optional<std::int64_t> ServerProbe::RssKib() const {
  std::ifstream statm("/proc/" + std::to_string(myPid) + "/statm");
  std::int64_t total = 0;
  std::int64_t resident = 0;
  if (!(statm >> total >> resident)) return std::nullopt;
  return resident * (sysconf(_SC_PAGESIZE) / 1024);
}

void ServerProbe::StartPeak() {
  // Writing 5 resets the peak to the current size (proc(5)).
  std::ofstream clear("/proc/" + std::to_string(myPid) + "/clear_refs");
  myHasPeak = static_cast<bool>(clear << 5 << std::flush);
}

std::optional<std::int64_t> ServerProbe::PeakKib() const {
  if (!myHasPeak) return std::nullopt;
  std::ifstream status("/proc/" + std::to_string(myPid) + "/status");
  std::string word;
  while (status >> word && word != "VmHWM:")
    continue;
  std::int64_t peak = 0;
  if (!(status >> peak)) return std::nullopt;
  return peak;
}

}  // namespace corvane::swarm
