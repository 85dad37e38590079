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

// Keeps count for each client address: its connections now, its refused connections, its recent
// wrong passwords, and the lines that it caused in the status log. Keeps nothing about addresses
// that the rules trust, and nothing that no rule needs. All IPv6 addresses of one /64 count as one
// address. Borrows the rules and the loop.
//
// Limits: remembers at most ten thousand addresses and then forgets the oldest. An address without
// connections is forgotten once two of the rules' periods pass without anything new.
class AddressTable {
 public:
  using Clock = PollLoop::Clock;

  // `owner` owns the table; the loop's timer does nothing once it is gone.
  AddressTable(PollLoop& loop, SocketCore& owner, const Rules& rules)
      : myLoop(loop), myOwner(owner), myRules(rules) {}

  // Event: a status line with the number of an address's connections that were refused or came
  // without a proxy's header, or of its lines that were left out, since the last one. Raised at
  // most once per period and address, and at once for the first connection. Must be set.
  std::function<void(StatusParts)> Reported;

  // Whether the address may have one more connection. Counts a refusal.
  bool Admit(const std::string& address);

  // Counts one connection for its address until it is destroyed. May outlive the table.
  class Place;

  // Counts a new connection. Null for an address that is not counted.
  std::unique_ptr<Place> Enter(const std::string& address);

  // Counts a connection of a proxy that did not begin with a header.
  void NoteMissingHeader(const std::string& address);

  // How long the answer to the address's next password is delayed.
  Clock::duration PasswordDelay(const std::string& address) const;
  void NoteWrongPassword(const std::string& address);

  // Whether the address may add a line to the status log. Counts a line that is left out.
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
  // Connections that were closed.
  struct Tally {
    std::uint64_t count = 0;  // not reported yet
    bool isReported = false;  // in this period
  };
  // Outlives the connections of its address.
  struct Memory {
    Tally refused;
    Tally withoutHeader;
    std::uint64_t leftOut = 0;  // lines, not reported yet
    Clock::time_point lines;    // when all its lines are within the rate
    std::vector<Clock::time_point>
        wrongPasswords;  // in the last period, at most as many as are free
    std::chrono::milliseconds delay{0};
  };
  struct Visit {
    Clock::time_point time;
    std::string address;
  };

  bool IsCounted(const std::string& address) const {
    return myRules.maxConnections.has_value() && !IsTrusted(address);
  }
  bool AreWrongPasswordsOver(const Memory& memory) const;
  // Creates the memory if there is none.
  Memory& Remember(const std::string& range);
  void NoteClosed(const std::string& address, Tally Memory::*tally);
  void Report(const std::string& address, Memory& memory) const;
  void VisitLater(const std::string& address);
  void VisitDue();
  void CallAtFirst();

  PollLoop& myLoop;
  SocketCore& myOwner;
  const Rules& myRules;
  std::shared_ptr<Counts> myConnections = std::make_shared<Counts>();
  std::unordered_map<std::string, Memory> myMemories;
  std::deque<Visit> myVisits;  // one for each memory, in order of time
  bool myIsCalled = false;     // the timer for the first one runs
};

class AddressTable::Place {
 public:
  Place(std::shared_ptr<Counts> counts, const std::string& address);
  ~Place();
  Place(const Place&) = delete;
  Place& operator=(const Place&) = delete;

  // From now on the connection counts as logged in.
  void Login();

 private:
  std::shared_ptr<Counts> myCounts;
  Counts::value_type* myCount;
  bool myIsLoggedIn = false;
};

}  // namespace corvane
