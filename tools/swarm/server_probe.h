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

  // Processor time of all its threads since it started.
  std::optional<std::chrono::nanoseconds> CpuTime() const;
  // Resident memory.
  std::optional<std::int64_t> RssKib() const;

 private:
  pid_t myPid;
};

}  // namespace corvane::swarm
