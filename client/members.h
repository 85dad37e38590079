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

// Another member of the network, as far as the server has told.
struct Member {
  std::string name;
  Report report;
  Clock::time_point news;  // when the report last changed or was sent anew
  // Whether it has reported. The list tells of who has not as of a report of zeros; nobody stands
  // there with no hit points and neither fighting nor dead.
  bool hasPlace = false;
  bool isListed = false;  // told of since the list was asked for
};

// What Members tells those who watch it.
class MembersWatcher {
 public:
  virtual ~MembersWatcher() = default;
  virtual void Added(const Member& member) = 0;
  virtual void Changed(const Member& member) = 0;
  // The member is about to go.
  virtual void Removed(const Member& member) = 0;
};

// The other members of the network. A name is one member whatever its letter case. A member stays
// at its place in memory until it is removed. Bounded, whatever a server says: further members are
// left out, and so is whoever has a name of more than kMaxNameBytes.
class Members {
 public:
  static constexpr std::size_t kMaxMembers = 5000;
  static constexpr std::size_t kMaxNameBytes = 1024;

  // The watcher hears of everything from now on, until it is taken away.
  void Watch(MembersWatcher& watcher) { myWatchers.push_back(&watcher); }
  void Unwatch(MembersWatcher& watcher) { std::erase(myWatchers, &watcher); }

  std::size_t Count() const { return myMembers.size(); }
  // The member of that name; null if there is none.
  const Member* Find(std::string_view name) const;
  // Whether somebody was left out since the last Clear.
  bool IsIncomplete() const { return myIsIncomplete; }

  // A member has sent a report.
  void TakeRelay(const MemberRecord& record, Clock::time_point now) { Take(record, true, now); }
  // The list of members tells of one. It is news only where it differs from what is known.
  void TakeListed(const MemberRecord& record, Clock::time_point now) { Take(record, false, now); }
  void Remove(std::string_view name);
  void Clear();

  // The list was asked for.
  void BeginList();
  // All of the list has come: removes whom nothing was told of since it was asked for.
  void EndList();

 private:
  using Map = std::unordered_map<std::string, Member>;  // by folded name

  void Take(const MemberRecord& record, bool isNews, Clock::time_point now);
  Map::iterator Remove(Map::iterator place);

  Map myMembers;
  std::vector<MembersWatcher*> myWatchers;
  bool myIsIncomplete = false;
};

}  // namespace corvane::client
