#pragma once

#include <algorithm>
#include <chrono>

namespace corvane {

// How many messages a peer may send: a burst, then one per interval.
struct MessageRate {
  std::chrono::nanoseconds interval{0};  // 0: no limit
  std::chrono::nanoseconds credit{0};    // intervals of a whole burst

  static constexpr MessageRate Of(int perSecond, int burst) {
    const auto interval = std::chrono::nanoseconds(std::chrono::seconds(1)) / perSecond;
    return {interval, interval * burst};
  }
};

// Limits one peer to its rate: returns how long its next message has to wait. Reads the clock only
// if there is a limit.
class MessageBudget {
 public:
  using Clock = std::chrono::steady_clock;

  // Starts with a whole burst.
  void Limit(const MessageRate& rate) {
    myRate = rate;
    myPaidUntil = {};
  }

  // Zero or less: the message need not wait, and the caller charges it.
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
