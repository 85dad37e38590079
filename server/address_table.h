#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "framework/status_line.h"
#include "net/poll_loop.h"
#include "server/rules.h"

namespace corvane {

// What the server knows of the addresses that clients come from: how many connections each has now,
// how many it was refused, which wrong passwords came from it lately, and how many lines of the
// status log it caused. Knows nothing where the rules ask for nothing, or trust the address.
// Borrows the rules, and the loop for one call at a time.
//
// Limits: an address without connections is forgotten when the rules' period has passed twice
// without anything new, the oldest at once where ten thousand are remembered.
class AddressTable {
 public:
  using Clock = PollLoop::Clock;

  // `owner` owns the table: no call of the loop's comes when it is gone.
  AddressTable(PollLoop& loop, SocketCore& owner, const Rules& rules)
      : myLoop(loop), myOwner(owner), myRules(rules) {}

  // Event: a status line with the number of connections of an address that were refused, or of
  // lines that were left out, since the last such line. Raised once a period, and at once for the
  // first refused connection. Must be set.
  std::function<void(StatusParts)> Reported;

  // Whether one more connection of the address may come in; one that may not is counted.
  bool Admit(const std::string& address);

  // One connection that is counted for its address, until this is destroyed; which may be after the
  // table is.
  class Place;

  // A connection came in. None for an address that is not counted.
  std::unique_ptr<Place> Enter(const std::string& address);

  // How long the answer to the address's next password has to wait.
  Clock::duration PasswordDelay(const std::string& address) const;
  void NoteWrongPassword(const std::string& address);

  // Whether the address may cause one more line of the status log; one that it may not is counted.
  bool AdmitLine(const std::string& address);

  bool IsTrusted(const std::string& address) const {
    return myRules.trustedAddresses.Contains(address);
  }

  std::size_t Size() const { return myConnections->size() + myMemories.size(); }

 private:
  struct Count {
    std::int32_t all = 0;
    std::int32_t notLoggedIn = 0;
  };
  using Counts = std::unordered_map<std::string, Count>;
  // What is remembered of an address when its connections have left.
  struct Memory {
    std::uint64_t refused = 0;                      // and not reported yet
    bool isRefusalReported = false;                 // in this period
    std::uint64_t leftOut = 0;                      // lines, not reported yet
    Clock::time_point lines;                        // when its lines are all within the rate
    std::vector<Clock::time_point> wrongPasswords;  // of the last period, as many as are free
    std::chrono::milliseconds delay{0};
  };
  struct Visit {
    Clock::time_point time;
    std::string address;
  };

  bool IsCounted(const std::string& address) const {
    return myRules.mostConnections.has_value() && !IsTrusted(address);
  }
  bool AreWrongPasswordsOver(const Memory& memory) const;
  // Its memory, a new one if there is none.
  Memory& Remember(const std::string& address);
  // What was not reported yet.
  void Report(const std::string& address, Memory& memory) const;
  // After a period.
  void VisitLater(const std::string& address);
  void VisitDue();
  void CallAtFirst();

  PollLoop& myLoop;
  SocketCore& myOwner;
  const Rules& myRules;
  std::shared_ptr<Counts> myConnections = std::make_shared<Counts>();
  std::unordered_map<std::string, Memory> myMemories;
  std::deque<Visit> myVisits;  // one for each memory, in the order of their times
  bool myIsCalled = false;     // at the first of them
};

class AddressTable::Place {
 public:
  Place(std::shared_ptr<Counts> counts, const std::string& address);
  ~Place();
  Place(const Place&) = delete;
  Place& operator=(const Place&) = delete;

  void LogIn();

 private:
  std::shared_ptr<Counts> myCounts;
  Counts::value_type* myCount;
  bool myIsLoggedIn = false;
};

}  // namespace corvane
