#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <sys/types.h>

namespace corvane::swarm {

// Looks at the server's process from outside. Every reading is none once the process is gone.
class ServerProbe {
 public:
  explicit ServerProbe(pid_t pid) : myPid(pid) {}

  void StartCpuClock() { myCpuAtStart = WholeCpuTime(); }
  // Processor time of all its threads since StartCpuClock.
  std::optional<std::chrono::nanoseconds> CpuTime() const;
  // How long its main thread, since it started, was ready to run and waited for a processor.
  std::optional<std::chrono::nanoseconds> WaitTime() const;
  // Resident memory.
  std::optional<std::int64_t> RssKib() const;

  // From here on PeakKib counts; it never does where the system does not allow that.
  void StartPeak();
  // The most resident memory since StartPeak.
  std::optional<std::int64_t> PeakKib() const;

 private:
  // Since the process started.
  std::optional<std::chrono::nanoseconds> WholeCpuTime() const;

  pid_t myPid;
  std::optional<std::chrono::nanoseconds> myCpuAtStart;
  bool myHasPeak = false;
};

}  // namespace corvane::swarm
