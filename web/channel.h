#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>

namespace corvane::web {

// What a network's links show, as server-sent events (WHATWG HTML, "text/event-stream"): "snapshot"
// with all members, "change" with those that changed and the ids of those that left, and "status"
// within both, which says whether the server is reached. Encodes each event once for all viewers.
//
// A member whose fields stay as they are is in a change every ten seconds, so that viewers know its
// last news. One thread publishes and another reads. A viewer that is more than one change behind
// gets the snapshot, so nothing queues up.
class Channel {
 public:
  using Clock = std::chrono::steady_clock;
  using Bytes = std::shared_ptr<const std::string>;

  struct Update {
    std::map<int, std::string> changed;  // the members' fields as JSON without braces, by id
    std::set<int> left;
    bool isOnline = true;
  };
  // Does nothing if the update changes nothing.
  void Publish(const Update& update);

  struct Event {
    std::uint64_t version = 0;
    Bytes bytes;
  };
  // The next event for a viewer who has seen that version, 0 for none; null bytes if there is no
  // news.
  Event Next(std::uint64_t seen) const;

 private:
  struct Member {
    std::string fields;
    Clock::time_point news;
    Clock::time_point published;  // in a change
  };

  mutable std::mutex myMutex;
  std::uint64_t myVersion = 1;
  std::map<int, Member> myMembers;
  bool myIsOnline = false;
  Bytes myChange;
  mutable Bytes mySnapshot;  // of this version; null until somebody asks
};

}  // namespace corvane::web
