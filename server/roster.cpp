#include "server/roster.h"

#include <algorithm>
#include <utility>

#include "server/client_socket.h"

namespace corvane {
namespace {

// What a hand-over may copy; it lets nobody else in meanwhile.
constexpr std::size_t kMostHandedOver = std::size_t{4} << 20;
// What is gathered does not become a large message by itself.
constexpr std::size_t kMostInOne = OutputQueue::kLarge / 2;

bool WasHandedOutBefore(const std::shared_ptr<ClientSocket>& session, std::uint64_t handOff) {
  return session->HandOffNumber() < handOff;
}

}  // namespace

void Roster::Enter(const std::shared_ptr<ClientSocket>& session) {
  AddName(*session);
  EnterNetwork(*session);
}

void Roster::Leave(ClientSocket& session) {
  if (session.HandOffNumber() == 0) return;
  LeaveNetwork(session);
  DropName(session);
}

void Roster::EnterNetwork(ClientSocket& session) {
  if (session.HandOffNumber() == 0 || session.myNetwork == nullptr) return;
  HandOver();
  auto& members =
      myGroups.try_emplace(session.myNetwork.get(), myPool).first->second.members.Edit();
  // Nearly always the end: who connects last chooses its network last.
  const auto place =
      std::lower_bound(members.begin(), members.end(), session.HandOffNumber(), WasHandedOutBefore);
  members.insert(place, std::static_pointer_cast<ClientSocket>(session.shared_from_this()));
}

void Roster::LeaveNetwork(ClientSocket& session) {
  if (session.HandOffNumber() == 0 || session.myNetwork == nullptr) return;
  HandOver();
  const auto group = myGroups.find(session.myNetwork.get());
  if (group == myGroups.end()) return;
  auto& members = group->second.members.Edit();
  const auto place =
      std::lower_bound(members.begin(), members.end(), session.HandOffNumber(), WasHandedOutBefore);
  if (place != members.end() && place->get() == &session) members.erase(place);
  if (members.empty()) myGroups.erase(group);
}

void Roster::AddName(const ClientSocket& session) {
  if (session.HandOffNumber() != 0) ++myNames[session.FoldedUsername()];
}

void Roster::DropName(const ClientSocket& session) {
  HandOver();
  const auto name = myNames.find(session.FoldedUsername());
  if (session.HandOffNumber() == 0 || name == myNames.end()) return;
  if (--name->second == 0) myNames.erase(name);
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
  if (group.outbox.Size() + packet.size() > kMostInOne) HandOver();
  if (group.outbox.IsEmpty()) myGathered.push_back(&group);
  group.outbox.Add(sender, packet);
  myGatheredBytes += packet.size() * group.members.Get()->size();
  if (myGatheredBytes >= kMostHandedOver) HandOver();
}

void Roster::HandOver() {
  myGatheredBytes = 0;
  for (Group* const group : std::exchange(myGathered, {}))
    group->outbox.HandOver(*group->members.Get());
}

bool Roster::IsNameFree(const std::string& foldedName, const ClientSocket& session) const {
  const auto name = myNames.find(foldedName);
  if (name == myNames.end()) return true;
  const bool isOwn = session.HandOffNumber() != 0 && session.FoldedUsername() == foldedName;
  return name->second == (isOwn ? 1U : 0U);
}

}  // namespace corvane
