#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <unordered_set>
#include <vector>

#include "client/members.h"
#include "map/recording/recording.h"
#include "map/recording/recording_block.h"

namespace corvane::map {

// Plays a recording into a list of members, whose news have the recording's time. Times are
// milliseconds since 1970 (UTC). Reads a block at a time. Where the recording turns out to be
// damaged, it ends.
class Player {
 public:
  // The recording's time on the members' clock.
  static client::Clock::time_point ClockAt(qint64 time);

  // Borrows the members.
  Player(Recording recording, client::Members& members);

  // Replaces all members by those of that time.
  void JumpTo(qint64 time);
  // Goes on to that time.
  void PlayTo(qint64 time);
  // The time of the next change; none at the end.
  std::optional<qint64> NextTime() const;

  const Recording& Played() const { return myRecording; }
  bool IsDamaged() const { return myIsDamaged; }

 private:
  void Show();
  void Show(const RecordedMember& member);
  void Clear();

  Recording myRecording;
  client::Members& myMembers;
  std::size_t myNextBlock = 0;
  std::optional<BlockReader> myReader;
  std::vector<std::size_t> myChanged;  // since Show
  bool myIsNewBlock = false;           // since Show
  std::unordered_set<std::string> myShown;
  bool myIsDamaged = false;
};

}  // namespace corvane::map
