#pragma once

#include <chrono>
#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "client/report.h"

namespace corvane::client {

using Clock = std::chrono::steady_clock;

// Another member of the network, as the server last reported it.
struct Member {
  std::string name;
  Report report;
  Clock::time_point news;  // of the last relayed report, or of the last change in a list
  // False until its first report. The server lists such a member with all fields 0.
  bool hasPlace = false;
  bool isListed = false;  // since BeginList
};

// Receives the changes of Members. A watcher must not change Members from a call.
class MembersWatcher {
 public:
  virtual ~MembersWatcher() = default;
  virtual void Added(const Member& member) = 0;
  virtual void Changed(const Member& member) = 0;
  // The member is still valid in this call.
  virtual void Removed(const Member& member) = 0;
};

// The other members of the network, by name without regard to letter case. After a session they
// stay, as they were last known, until the first list of the next one. A pointer to a member is
// valid until it is removed. Limits: drops members beyond kMaxMembers, and those with names longer
// than kMaxNameBytes.
class Members {
 public:
  static constexpr std::size_t kMaxMembers = 5000;
  static constexpr std::size_t kMaxNameBytes = 1024;

  // Borrows the watcher until Unwatch.
  void Watch(MembersWatcher& watcher) { myWatchers.push_back(&watcher); }
  void Unwatch(MembersWatcher& watcher) { std::erase(myWatchers, &watcher); }

  std::size_t Count() const { return myMembers.size(); }
  // Null if there is no member of that name.
  const Member* Find(std::string_view name) const;
  // Whether a member was dropped since the begin of the last complete list, or the last Clear.
  bool IsIncomplete() const { return myIsIncomplete; }
  // False from Expire to the end of the next list: the members are those of an earlier session.
  bool IsCurrent() const { return myIsCurrent; }

  // Stores a relayed report.
  void TakeRelay(const MemberRecord& record, Clock::time_point now) { Take(record, true, now); }
  // Stores an entry of the member list. Watchers see it only if it differs from the stored report.
  void TakeListed(const MemberRecord& record, Clock::time_point now) { Take(record, false, now); }
  void Remove(std::string_view name);
  void Clear();

  // Called when a session ends, and before the first.
  void Expire() { myIsCurrent = false; }
  // Called when the member list is requested.
  void BeginList();
  // Called when the list is complete. Removes members without a report or entry since BeginList.
  void EndList();

 private:
  using Map = std::unordered_map<std::string, Member>;  // by folded name

  void Take(const MemberRecord& record, bool isNews, Clock::time_point now);
  void Drop();
  Map::iterator Remove(Map::iterator place);

  Map myMembers;
  std::vector<MembersWatcher*> myWatchers;
  bool myIsIncomplete = false;
  bool myHasDropped = false;  // since BeginList
  bool myIsCurrent = true;
};

}  // namespace corvane::client
