#include "map/recording/player.h"

#include <chrono>
#include <cstdlib>
#include <utility>

namespace corvane::map {
namespace {

using client::Member;
using std::chrono::milliseconds;

// After a longer pause between blocks nobody is known to be there.
constexpr qint64 kMaxPause = 5000;
// Blocks round the ages of news.
constexpr milliseconds kSameNews{100};

}  // namespace

client::Clock::time_point Player::ClockAt(qint64 time) {
  return client::Clock::time_point(milliseconds(time));
}

Player::Player(Recording recording, client::Members& members)
    : myRecording(std::move(recording)), myMembers(members) {}

std::optional<qint64> Player::NextTime() const {
  if (myReader && myReader->NextFrame()) return myReader->NextFrame();
  if (myIsDamaged || myNextBlock == myRecording.Blocks()) return std::nullopt;
  return myRecording.BeginOf(myNextBlock);
}

void Player::JumpTo(qint64 time) {
  Clear();
  myReader.reset();
  myChanged.clear();
  myNextBlock = myRecording.BlockAt(time);
  PlayTo(time);
}

void Player::PlayTo(qint64 time) {
  for (auto next = NextTime(); next && *next <= time; next = NextTime()) {
    if (!myReader || !myReader->NextFrame()) {
      // A block needs none before it, and there may be any number in a moment.
      myNextBlock = myRecording.BlockAt(time);
      myChanged.clear();
      myIsNewBlock = true;
      myReader.emplace(myRecording.Load(myNextBlock++));
    } else {
      myReader->ReadFrame(myChanged);
    }
    if (myReader->IsDamaged()) myIsDamaged = true;
  }
  Show();
  if (myReader && time > myReader->End() + kMaxPause) Clear();
}

// Shows what has changed since the last call.
void Player::Show() {
  if (!myReader) return;
  if (std::exchange(myIsNewBlock, false)) {
    std::unordered_set<std::string> left = myShown;
    for (const RecordedMember& member : myReader->Members())
      if (member.isPresent) left.erase(member.name);
    for (const std::string& name : left) {
      myMembers.Remove(name);
      myShown.erase(name);
    }
  }
  std::vector<bool> isShown(myReader->Members().size());
  for (const std::size_t index : std::exchange(myChanged, {})) {
    if (isShown[index]) continue;
    isShown[index] = true;
    Show(myReader->Members()[index]);
  }
}

void Player::Show(const RecordedMember& member) {
  if (!member.isPresent) {
    if (myShown.erase(member.name) > 0) myMembers.Remove(member.name);
    return;
  }
  myShown.insert(member.name);
  const auto news = ClockAt(member.news);
  const client::MemberRecord record{member.name, member.report};
  const Member* known = myMembers.Find(member.name);
  if (known != nullptr && known->report == member.report && known->hasPlace == member.hasPlace &&
      std::chrono::abs(known->news - news) < kSameNews)
    return;
  if (member.hasPlace) {
    myMembers.TakeRelay(record, news);
  } else {
    myMembers.TakeListed({member.name, {}}, news);
  }
}

void Player::Clear() {
  myMembers.Clear();
  myShown.clear();
}

}  // namespace corvane::map
