#include "control/rates.h"

#include <algorithm>
#include <utility>

namespace corvane {
namespace {

constexpr std::size_t kSamples = 10;

}  // namespace

Rates::Rates(const TrafficCounts& counted, PassTimes& passes)
    : myCounted(counted), myPasses(passes) {
  Take();
  QObject::connect(&myTimer, &QTimer::timeout, [this] { Take(); });
  myTimer.start(std::chrono::seconds(1));
}

void Rates::Take() {
  if (mySamples.size() == kSamples) mySamples.pop_front();
  mySamples.push_back(
      {std::chrono::steady_clock::now(), myCounted, std::exchange(myPasses.longest, {})});
}

Rates::Rate Rates::Now() {
  const Sample& then = mySamples.front();
  const std::chrono::duration<double> time = std::chrono::steady_clock::now() - then.time;
  const auto aSecond = [&time](std::uint64_t before, std::uint64_t after) {
    return static_cast<double>(after - before) / time.count();
  };
  auto longest = myPasses.longest;
  for (const Sample& sample : mySamples)
    longest = std::max(longest, sample.longestPass);
  return {aSecond(then.counted.messages, myCounted.messages),
          aSecond(then.counted.received, myCounted.received),
          aSecond(then.counted.sent, myCounted.sent), longest};
}

}  // namespace corvane
