#include "server/outbox.h"

#include <algorithm>
#include <new>

#include "server/client_socket.h"

namespace corvane {
namespace {

constexpr std::size_t kMaxKept = std::size_t{256} << 10;  // bytes of capacity, for the next reports
// A member falls behind by at most this much between two looks at how the members read.
constexpr std::size_t kBytesBetweenLooks = std::size_t{256} << 10;
constexpr std::chrono::milliseconds kTimeBetweenLooks{10};

}  // namespace

void Outbox::Add(const std::shared_ptr<ClientSocket>& sender, std::string_view packet) {
  myBytes += packet;
  myPackets.push_back({sender, myBytes.size()});
  sender->Relayed += packet.size();
  // Only the empty name and the names of sessions without a listener may be held twice.
  if (sender->Username().empty() || sender->HandOffNumber() == 0) myIsNameShared = true;
}

std::uint64_t Outbox::Deliver(const Members& members) {
  const std::optional<std::uint64_t> delivered = DeliverTo(members);
  if (delivered) {
    mySinceLook += myBytes.size();
    if (mySinceLook >= kBytesBetweenLooks && AreMostBehind(members)) HoldSenders();
  } else {
    // The packets are lost, and their senders fail.
    for (const Packet& packet : myPackets)
      packet.sender->FailForMemory();
  }
  Clear();
  return delivered.value_or(0);
}

std::optional<std::uint64_t> Outbox::DeliverTo(const Members& members) try {
  const SharedBytes all = myWriter.Append(myBytes);
  if (all.Size() < myBytes.size()) return std::nullopt;
  std::uint64_t delivered = 0;
  const std::vector<const ClientSocket*> senders = Senders();
  auto next = senders.begin();
  for (const std::shared_ptr<ClientSocket>& member : members) {
    while (next != senders.end() && (*next)->HandOffNumber() < member->HandOffNumber())
      ++next;
    const bool isSender = next != senders.end() && *next == member.get();
    if (isSender || myIsNameShared) {
      delivered += SendOthers(*member, all);
    } else {
      member->SendPackets(all);
      delivered += myPackets.size();
    }
  }
  return delivered;
} catch (const std::bad_alloc&) {
  return std::nullopt;
}

bool Outbox::AreMostBehind(const Members& members) {
  const auto now = PollLoop::Clock::now();
  if (mySinceLook < kBytesBetweenLooks && now < myNextLook) return myAreMostBehind;
  std::size_t behind = 0;
  std::size_t keepUp = 0;
  for (const std::shared_ptr<ClientSocket>& member : members) {
    // A stranger that only named the network must not hold anybody up.
    if (member->LoginState() != ClientSocket::State::LoggedIn) continue;
    const auto reading = member->HowPeerReads(now);
    if (reading == TCPSocket::Reading::IsBehind) ++behind;
    if (reading == TCPSocket::Reading::KeepsUp) ++keepUp;
  }
  // The sender is one of the members and usually keeps up.
  myAreMostBehind = behind > 0 && behind >= keepUp;
  mySinceLook = 0;
  myNextLook = now + kTimeBetweenLooks;
  return myAreMostBehind;
}

void Outbox::HoldSenders() const {
  for (const Packet& packet : myPackets) {
    if (packet.sender->Relayed < kBytesBetweenLooks) continue;
    packet.sender->Relayed = 0;
    packet.sender->AwaitReaders();
  }
}

std::vector<const ClientSocket*> Outbox::Senders() const {
  std::vector<const ClientSocket*> senders;
  for (const Packet& packet : myPackets) {
    if (senders.empty() || senders.back() != packet.sender.get()) {
      senders.push_back(packet.sender.get());
    }
  }
  std::ranges::sort(senders, {}, &ClientSocket::HandOffNumber);
  return senders;
}

void Outbox::Clear() {
  if (myBytes.capacity() > kMaxKept) myBytes = {};
  if (myPackets.capacity() * sizeof(Packet) > kMaxKept) myPackets = {};
  myBytes.clear();
  myPackets.clear();
  myIsNameShared = false;
}

std::size_t Outbox::SendOthers(ClientSocket& member, const SharedBytes& all) const {
  std::size_t others = 0;
  std::size_t begin = 0;  // of the bytes not written yet
  std::size_t end = 0;    // of the previous packet
  for (const Packet& packet : myPackets) {
    // By name, not by session: two sessions of one name never see each other, on purpose.
    const bool isOwn =
        packet.sender.get() == &member ||
        (myIsNameShared && packet.sender->FoldedUsername() == member.FoldedUsername());
    if (isOwn) {
      member.SendPackets(all.SubRange(begin, end - begin));
      begin = packet.end;
    } else {
      ++others;
    }
    end = packet.end;
  }
  member.SendPackets(all.SubRange(begin, all.Size() - begin));
  return others;
}

}  // namespace corvane
