#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "client/report.h"

namespace corvane::swarm {

struct Member {
  std::size_t network = 0;
  std::size_t user = 0;

  bool operator==(const Member&) const = default;
};

// The name under which a member of a measured run logs in: prefix, network, "-", user.
std::string UserNameOf(std::string_view prefix, Member member);
// The member of that name; none if it is no such name.
std::optional<Member> ParseUserName(std::string_view prefix, std::string_view userName);

// The report that a member sends as its n-th (counted from 1). Two in a row always differ, and the
// receiver can tell from one whether it arrived unchanged.
client::Report ReportOf(Member sender, std::uint32_t sequence);

// The exact account of a measured run: every report of a sender is expected once at every other
// member of its network, in the order in which they were sent.
class DeliveryBook {
 public:
  // In each network, the first `senders` of the `users` members send.
  DeliveryBook(std::size_t networks, std::size_t users, std::size_t senders);

  // Notes that the member sends its next report and returns which.
  std::uint32_t Send(Member sender);

  // Notes what the recipient got from the sender. True if it is a delivery that was still
  // expected; else it is counted as unexpected. A gap before it stays missing for good.
  bool Receive(Member recipient, Member sender, const client::Report& report);
  // Notes a message that nobody should have got in the run.
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
