#pragma once

#include <algorithm>
#include <chrono>

namespace corvane {

// How many messages a peer may send: so many at once, then one per interval.
struct MessageRate {
  std::chrono::nanoseconds interval{0};  // none: any number
  std::chrono::nanoseconds credit{0};    // the time that the messages at once would take

  static constexpr MessageRate Of(int perSecond, int atOnce) {
    const auto interval = std::chrono::nanoseconds(std::chrono::seconds(1)) / perSecond;
    return {interval, interval * atOnce};
  }
};

// Says how long a peer's next message has to wait. Looks at the clock only where they are limited.
class MessageBudget {
 public:
  using Clock = std::chrono::steady_clock;

  // Begins with the whole credit.
  void Limit(const MessageRate& rate) {
    myRate = rate;
    myPaidUntil = {};
  }

  // Zero or less: none. A message that need not wait is to be charged.
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
