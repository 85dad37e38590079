#include "tools/swarm/delivery_book.h"

#include <charconv>

namespace corvane::swarm {

std::string UserNameOf(std::string_view prefix, Member member) {
  return std::string(prefix) + std::to_string(member.network) + "-" + std::to_string(member.user);
}

std::optional<Member> ParseUserName(std::string_view prefix, std::string_view userName) {
  if (!userName.starts_with(prefix)) return std::nullopt;
  const char* next = userName.data() + prefix.size();
  const char* const end = userName.data() + userName.size();
  Member member;
  const auto network = std::from_chars(next, end, member.network);
  if (network.ec != std::errc() || network.ptr == end || *network.ptr != '-') return std::nullopt;
  const auto user = std::from_chars(network.ptr + 1, end, member.user);
  if (user.ec != std::errc() || user.ptr != end) return std::nullopt;
  return member;
}

client::Report ReportOf(Member sender, std::uint32_t sequence) {
  client::Report report;
  report.x = static_cast<std::int32_t>(sequence);
  report.y = static_cast<std::int32_t>((sequence * 7 + sender.user * 31) % 4096);
  report.facet = static_cast<std::int32_t>(sender.network % 6);
  report.hp = static_cast<std::int32_t>(1 + sequence % 100);
  report.inBattle = sequence % 2 == 1;
  report.isDead = sequence % 8 == 0;
  return report;
}

DeliveryBook::DeliveryBook(std::size_t networks, std::size_t users, std::size_t senders)
    : myNetworks(networks),
      myUsers(users),
      mySenders(senders),
      myLastSent(networks * senders),
      myLastReceived(networks * users * senders) {}

std::uint32_t DeliveryBook::Send(Member sender) {
  ++mySent;
  return ++myLastSent[sender.network * mySenders + sender.user];
}

bool DeliveryBook::Receive(Member recipient, Member sender, const client::Report& report) {
  const bool isSender = sender.network < myNetworks && sender.user < mySenders;
  if (!isSender || sender.network != recipient.network || sender == recipient) {
    ++myUnexpected;
    return false;
  }
  const auto sequence = static_cast<std::uint32_t>(report.x);
  auto& last =
      myLastReceived[(recipient.network * myUsers + recipient.user) * mySenders + sender.user];
  const bool wasSent = sequence <= myLastSent[sender.network * mySenders + sender.user];
  if (sequence <= last || !wasSent || report != ReportOf(sender, sequence)) {
    ++myUnexpected;
    return false;
  }
  last = sequence;
  ++myReceived;
  return true;
}

}  // namespace corvane::swarm
