#include "client/members.h"

#include <iterator>

#include "framework/text.h"

namespace corvane::client {

const Member* Members::Find(std::string_view name) const {
  const auto place = myMembers.find(FoldText(name));
  return place == myMembers.end() ? nullptr : &place->second;
}

void Members::Take(const MemberRecord& record, bool isNews, Clock::time_point now) {
  if (record.name.size() > kMaxNameBytes) return Drop();
  const bool hasPlace = isNews || record.report != Report{};
  std::string key = FoldText(record.name);
  const auto place = myMembers.find(key);
  if (place == myMembers.end()) {
    if (myMembers.size() >= kMaxMembers) return Drop();
    const Member& added = myMembers
                              .emplace(std::move(key), Member{std::string(record.name),
                                                              record.report, now, hasPlace, true})
                              .first->second;
    for (MembersWatcher* watcher : myWatchers)
      watcher->Added(added);
    return;
  }
  Member& member = place->second;
  member.isListed = true;
  if (!isNews && member.report == record.report) return;
  member.name = record.name;
  member.report = record.report;
  member.news = now;
  member.hasPlace = hasPlace;
  for (MembersWatcher* watcher : myWatchers)
    watcher->Changed(member);
}

void Members::Drop() {
  myIsIncomplete = true;
  myHasDropped = true;
}

void Members::Remove(std::string_view name) {
  if (name.size() > kMaxNameBytes) return;
  const auto place = myMembers.find(FoldText(name));
  if (place != myMembers.end()) Remove(place);
}

Members::Map::iterator Members::Remove(Map::iterator place) {
  for (MembersWatcher* watcher : myWatchers)
    watcher->Removed(place->second);
  return myMembers.erase(place);
}

void Members::Clear() {
  for (auto place = myMembers.begin(); place != myMembers.end();)
    place = Remove(place);
  myIsIncomplete = false;
}

void Members::BeginList() {
  myHasDropped = false;
  for (auto& [key, member] : myMembers)
    member.isListed = false;
}

void Members::EndList() {
  for (auto place = myMembers.begin(); place != myMembers.end();)
    place = place->second.isListed ? std::next(place) : Remove(place);
  myIsIncomplete = myHasDropped;
  myIsCurrent = true;
}

}  // namespace corvane::client
