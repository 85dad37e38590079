#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <sys/types.h>

namespace corvane::swarm {

// Measures the server's process from outside. Each value is none once the process has ended.
class ServerProbe {
 public:
  explicit ServerProbe(pid_t pid) : myPid(pid) {}

  void StartCpuClock() { myCpuAtStart = WholeCpuTime(); }
  // Processor time of all its threads since StartCpuClock.
  std::optional<std::chrono::nanoseconds> CpuTime() const;
  // How long its main thread has been ready to run and waited for a processor since it started.
  std::optional<std::chrono::nanoseconds> WaitTime() const;
  // Resident memory.
  std::optional<std::int64_t> RssKib() const;

  // Begins the measurement for PeakKib. Some systems do not allow it.
  void StartPeak();
  // The largest resident memory since StartPeak; none without it.
  std::optional<std::int64_t> PeakKib() const;

 private:
  // Since the process started.
  std::optional<std::chrono::nanoseconds> WholeCpuTime() const;

  pid_t myPid;
  std::optional<std::chrono::nanoseconds> myCpuAtStart;
  bool myHasPeak = false;
};

}  // namespace corvane::swarm
