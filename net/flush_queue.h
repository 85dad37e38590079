#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <memory>
#include <optional>

namespace corvane {

class TCPSocket;

// The connections that were written to since their last send, and the decision when to send.
//
// As a rule everything goes out when the loop flushes. But a send costs the system some
// microseconds however little it carries, so while very many small ones pile up they are held for a
// moment: what is written to a connection meanwhile shares one send.
class FlushQueue {
 public:
  using Clock = std::chrono::steady_clock;

  // When sends are held, and for how long.
  struct Rule {
    // Sends a second from which on they are held, and below which no more: held, there are about
    // half as many. A small send takes the system some 5 us, so this is a fifth of a processor.
    double busy = 40'000;
    double calm = 10'000;
    // Mean bytes of a send below which they are held, and from which on no more. Larger ones are
    // shared by many reports already.
    std::uint64_t small = 256;
    std::uint64_t large = 4096;
    std::chrono::milliseconds hold{3};
  };

  explicit FlushQueue(const Rule& rule) : myRule(rule) {}

  void Add(const std::shared_ptr<TCPSocket>& socket);

  // Sends what is due, until `end` at the latest; and everything, held or not.
  void Flush(Clock::time_point end);
  void FlushNow(Clock::time_point end);

  // When there is something to flush; none while nothing waits.
  std::optional<Clock::time_point> Due() const;

  // Empties it without sending.
  void Drop();

 private:
  void ChooseWhetherToHold(Clock::time_point now);

  const Rule myRule;
  std::deque<std::shared_ptr<TCPSocket>> mySockets;
  Clock::time_point mySince;  // when the first of them was written to

  bool myIsHolding = false;
  // The sends since the begin of the window that the choice is made by.
  Clock::time_point myWindowBegin;
  std::uint64_t mySends = 0;
  std::uint64_t mySentBytes = 0;
};

}  // namespace corvane
