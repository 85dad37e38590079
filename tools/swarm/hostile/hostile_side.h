#pragma once

#include <exception>
#include <memory>
#include <thread>

#include "tools/swarm/hostile/parts.h"
#include "tools/swarm/hostile/stranger_pool.h"
#include "tools/swarm/options.h"

namespace corvane::swarm {

// The strangers of one part on a thread of their own, which gives way to the thread that measures.
class HostileSide {
 public:
  HostileSide(const Options& options, const PartInfo& part);

  void Start();
  // Asks the strangers to end and does not wait for it.
  void Stop() { myThread.request_stop(); }
  // Waits for their end. Throws what ended them, if that was an error.
  const StrangerCounts& Finish();

  const PartInfo& Info() const { return myInfo; }

 private:
  const PartInfo& myInfo;
  std::unique_ptr<HostilePart> myPart;
  StrangerPool myPool;
  std::exception_ptr myError;
  std::jthread myThread;  // the last, so that it ends before what it uses
};

}  // namespace corvane::swarm
