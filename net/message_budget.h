#pragma once

#include <algorithm>
#include <chrono>

namespace corvane {

// How many messages a peer may send: a burst, then one per interval.
struct MessageRate {
  std::chrono::nanoseconds interval{0};  // 0: no limit
  std::chrono::nanoseconds credit{0};    // the burst: its number of messages times the interval

  static constexpr MessageRate Of(int perSecond, int burst) {
    const auto interval = std::chrono::nanoseconds(std::chrono::seconds(1)) / perSecond;
    return {interval, interval * burst};
  }
};

// Limits the rate of one peer's messages, which the caller delays and charges. Unlimited until
// Limit is called; reads the clock only if there is a limit.
class MessageBudget {
 public:
  using Clock = std::chrono::steady_clock;

  // Starts with a whole burst.
  void Limit(const MessageRate& rate) {
    myRate = rate;
    myPaidUntil = {};
  }

  // How long the next message has to wait. If zero or less, the caller may deliver it now and then
  // calls ChargeMessage.
  Clock::duration Wait() const {
    if (IsUnlimited()) return {};
    return myPaidUntil + myRate.interval - myRate.credit - Clock::now();
  }
  void ChargeMessage() {
    if (!IsUnlimited()) myPaidUntil = std::max(myPaidUntil, Clock::now()) + myRate.interval;
  }

 private:
  bool IsUnlimited() const { return myRate.interval == std::chrono::nanoseconds::zero(); }

  MessageRate myRate;
  Clock::time_point myPaidUntil;
};

}  // namespace corvane
