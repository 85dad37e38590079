#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "client/report.h"

namespace corvane::swarm {

// A member of a run, by the numbers of its network and of the user in it.
struct Member {
  std::size_t network = 0;
  std::size_t user = 0;

  bool operator==(const Member&) const = default;
};

// The name under which a member of a measured run logs in: prefix, network, "-", user.
std::string UserNameOf(std::string_view prefix, Member member);
// The member with that name; none if it is not such a name.
std::optional<Member> ParseUserName(std::string_view prefix, std::string_view userName);

// The report number `sequence` (from 1) of a member. Consecutive reports differ, and a receiver can
// tell whether a report arrived unchanged.
client::Report ReportOf(Member sender, std::uint32_t sequence);

// Accounts for every delivery of a measured run: each report of a sender is expected once at every
// other member of its network, in the order of sending.
class DeliveryBook {
 public:
  // In each network, the first `senders` of the `users` members send.
  DeliveryBook(std::size_t networks, std::size_t users, std::size_t senders);

  // Counts the member's next report and returns its number.
  std::uint32_t Send(Member sender);

  // Counts a delivery. Returns false if it was not expected, or no longer: reports that a delivery
  // skips stay missing.
  bool Receive(Member recipient, Member sender, const client::Report& report);
  // Counts a message that is no delivery as unexpected.
  void ReceiveForeign() { ++myUnexpected; }

  std::uint64_t Sent() const { return mySent; }
  std::uint64_t Expected() const { return mySent * (myUsers - 1); }
  std::uint64_t Received() const { return myReceived; }
  std::uint64_t Missing() const { return Expected() - myReceived; }
  std::uint64_t Unexpected() const { return myUnexpected; }

 private:
  std::size_t myNetworks;
  std::size_t myUsers;
  std::size_t mySenders;
  std::vector<std::uint32_t> myLastSent;      // by network, sender
  std::vector<std::uint32_t> myLastReceived;  // by network, recipient, sender
  std::uint64_t mySent = 0;
  std::uint64_t myReceived = 0;
  std::uint64_t myUnexpected = 0;
};

}  // namespace corvane::swarm
