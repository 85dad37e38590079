#include "tools/swarm/hostile/hostile_side.h"

#include <sys/resource.h>
#include <unistd.h>

#include "client/password_digest.h"

namespace corvane::swarm {

namespace {

constexpr int kNiceness = 10;

StrangerPool::Access AccessOf(const Options& options, const HostilePart& part) {
  const bool isSame = part.Custom().standing == Standing::SameNetwork;
  return {isSame ? options.networks.front() : options.strangersNetwork,
          client::PasswordDigest(options.password), options.strangersSources};
}

}  // namespace

HostileSide::HostileSide(const Options& options, const PartInfo& part)
    : myInfo(part),
      myPart(part.make()),
      myPool(options.server, *myPart, AccessOf(options, *myPart)) {}

void HostileSide::Start() {
  myThread = std::jthread([this](const std::stop_token& stop) {
    // On Linux a thread has a niceness of its own.
    setpriority(PRIO_PROCESS, static_cast<id_t>(gettid()), kNiceness);
    try {
      myPool.Run(stop);
    } catch (...) {
      myError = std::current_exception();
    }
  });
}

const StrangerCounts& HostileSide::Finish() {
  Stop();
  if (myThread.joinable()) myThread.join();
  if (myError) std::rethrow_exception(myError);
  return myPool.Counts();
}

}  // namespace corvane::swarm
