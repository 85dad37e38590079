#include "server/roster.h"

#include <algorithm>

#include "server/client_socket.h"

namespace corvane {
namespace {

bool WasHandedOutBefore(const std::shared_ptr<ClientSocket>& session, std::uint64_t handOff) {
  return session->HandOffNumber() < handOff;
}

}  // namespace

void Roster::Enter(const std::shared_ptr<ClientSocket>& session) {
  session->SetHandOffNumber(++myLastHandOff);
  AddName(*session);
  EnterNetwork(*session);
}

void Roster::Leave(ClientSocket& session) {
  if (session.HandOffNumber() == 0) return;
  LeaveNetwork(session);
  DropName(session);
  session.SetHandOffNumber(0);
}

void Roster::EnterNetwork(ClientSocket& session) {
  if (session.HandOffNumber() == 0 || session.myNetwork == nullptr) return;
  auto& members = myMembers[session.myNetwork.get()].Edit();
  // Nearly always the end: who connects last chooses its network last.
  const auto place =
      std::lower_bound(members.begin(), members.end(), session.HandOffNumber(), WasHandedOutBefore);
  members.insert(place, std::static_pointer_cast<ClientSocket>(session.shared_from_this()));
}

void Roster::LeaveNetwork(ClientSocket& session) {
  if (session.HandOffNumber() == 0 || session.myNetwork == nullptr) return;
  const auto list = myMembers.find(session.myNetwork.get());
  if (list == myMembers.end()) return;
  auto& members = list->second.Edit();
  const auto place =
      std::lower_bound(members.begin(), members.end(), session.HandOffNumber(), WasHandedOutBefore);
  if (place != members.end() && place->get() == &session) members.erase(place);
  if (members.empty()) myMembers.erase(list);
}

void Roster::AddName(const ClientSocket& session) {
  if (session.HandOffNumber() != 0) ++myNames[session.FoldedUsername()];
}

void Roster::DropName(const ClientSocket& session) {
  const auto name = myNames.find(session.FoldedUsername());
  if (session.HandOffNumber() == 0 || name == myNames.end()) return;
  if (--name->second == 0) myNames.erase(name);
}

Roster::Members::Snapshot Roster::MembersOf(const ServerNetworks& network) const {
  static const Members kNobody;
  const auto list = myMembers.find(&network);
  return list == myMembers.end() ? kNobody.Get() : list->second.Get();
}

bool Roster::IsNameFree(const std::string& foldedName, const ClientSocket& session) const {
  const auto name = myNames.find(foldedName);
  if (name == myNames.end()) return true;
  const bool isOwn = session.HandOffNumber() != 0 && session.FoldedUsername() == foldedName;
  return name->second == (isOwn ? 1U : 0U);
}

}  // namespace corvane
