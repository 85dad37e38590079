#include "server/roster.h"

#include <algorithm>
#include <new>
#include <utility>

#include "net/poll_loop.h"
#include "server/client_socket.h"

namespace corvane {
namespace {

// Bytes that a delivery may write: it serves nobody else in between.
constexpr std::size_t kMaxDelivery = std::size_t{4} << 20;
// Gathered reports must not become a large message, to which other bounds apply.
constexpr std::size_t kMaxPiece = OutputQueue::kLarge / 2;

// The place of the session among the members, or where it belongs, in hand-off order.
auto PlaceOf(const ClientSocket& session, Outbox::Members& members) {
  return std::ranges::lower_bound(members, session.HandOffNumber(), {},
                                  [](const auto& member) { return member->HandOffNumber(); });
}

}  // namespace

Roster::Change::~Change() {
  try {
    myRoster.Enter(mySession);
  } catch (const std::bad_alloc&) {
    mySession.FailForMemory();
  }
}

Roster::~Roster() {
  myLoop.RunBeforeFlush();
}

void Roster::Enter(ClientSocket& session) {
  if (session.HandOffNumber() == 0) return;
  ++myNames[session.FoldedUsername()];
  if (!session.HearsItsNetwork()) return;
  auto& members = myGroups.try_emplace(session.myNetwork.get(), myLoop.Memory().output)
                      .first->second.members.Edit();
  // Nearly always at the end: the session that connected last chooses its network last.
  members.insert(PlaceOf(session, members), session.Self());
}

void Roster::Leave(ClientSocket& session) {
  if (session.HandOffNumber() == 0) return;
  myLoop.RunBeforeFlush();
  const auto name = myNames.find(session.FoldedUsername());
  if (name != myNames.end() && --name->second == 0) myNames.erase(name);
  const auto group = myGroups.find(session.myNetwork.get());
  if (group == myGroups.end()) return;
  auto& members = group->second.members.Edit();
  const auto place = PlaceOf(session, members);
  if (place != members.end() && place->get() == &session) members.erase(place);
  if (members.empty()) myGroups.erase(group);
}

Roster::Members::Snapshot Roster::MembersOf(const ServerNetworks& network) const {
  static const Members kNobody;
  const auto group = myGroups.find(&network);
  return group == myGroups.end() ? kNobody.Get() : group->second.members.Get();
}

void Roster::Gather(const std::shared_ptr<ClientSocket>& sender, std::string_view packet) {
  const auto found = myGroups.find(sender->myNetwork.get());
  if (found == myGroups.end()) return;
  Group& group = found->second;
  if (group.outbox.Size() + packet.size() > kMaxPiece) myLoop.RunBeforeFlush();
  if (!HasGathered()) myLoop.CallBeforeFlush([this] { Deliver(); });
  if (group.outbox.IsEmpty()) myGathered.push_back(&group);
  group.outbox.Add(sender, packet);
  ++myReports;
  myGatheredBytes += packet.size() * group.members.Get()->size();
  if (myGatheredBytes >= kMaxDelivery) myLoop.RunBeforeFlush();
}

void Roster::Deliver() {
  myGatheredBytes = 0;
  for (Group* const group : std::exchange(myGathered, {}))
    myDeliveries += group->outbox.Deliver(*group->members.Get());
}

bool Roster::AreMostBehind(const ServerNetworks& network) {
  const auto group = myGroups.find(&network);
  return group != myGroups.end() &&
         group->second.outbox.AreMostBehind(*group->second.members.Get());
}

bool Roster::IsNameFree(const std::string& foldedName, const ClientSocket& session) const {
  const auto name = myNames.find(foldedName);
  if (name == myNames.end()) return true;
  const bool isOwn = session.HandOffNumber() != 0 && session.FoldedUsername() == foldedName;
  return name->second == (isOwn ? 1U : 0U);
}

}  // namespace corvane
