#include "web/channel.h"

namespace corvane::web {
namespace {

constexpr std::chrono::seconds kNewsAgain{10};

std::string Encoded(const char* type, const std::string& data) {
  return std::string("event: ") + type + "\ndata: {" + data + "}\n\n";
}

std::string Status(bool isOnline) {
  return std::string("\"online\":") + (isOnline ? "true" : "false");
}

}  // namespace

void Channel::Publish(const Update& update) {
  const std::scoped_lock lock(myMutex);
  const auto now = Clock::now();
  std::string members;
  for (const auto& [id, fields] : update.changed) {
    Member& member = myMembers[id];
    member.news = now;
    if (member.fields == fields && now - member.published < kNewsAgain) continue;
    member.published = now;
    members += (members.empty() ? "{" : ",{") + fields + ",\"age\":0}";
    member.fields = fields;
  }
  std::string left;
  for (const int id : update.left) {
    if (myMembers.erase(id) > 0) left += (left.empty() ? "" : ",") + std::to_string(id);
  }
  if (members.empty() && left.empty() && update.isOnline == myIsOnline) return;
  myIsOnline = update.isOnline;
  ++myVersion;
  mySnapshot = nullptr;
  myChange = std::make_shared<const std::string>(Encoded(
      "change", "\"members\":[" + members + "],\"left\":[" + left + "]," + Status(myIsOnline)));
}

Channel::Event Channel::Next(std::uint64_t seen) const {
  const std::scoped_lock lock(myMutex);
  if (seen == myVersion) return {seen, nullptr};
  if (seen + 1 == myVersion && seen != 0) return {myVersion, myChange};
  if (mySnapshot == nullptr) {
    std::string members;
    const auto now = Clock::now();
    for (const auto& [id, member] : myMembers) {
      const auto age = std::chrono::duration_cast<std::chrono::seconds>(now - member.news);
      members += (members.empty() ? "{" : ",{") + member.fields +
                 ",\"age\":" + std::to_string(age.count()) + '}';
    }
    mySnapshot = std::make_shared<const std::string>(
        Encoded("snapshot", "\"members\":[" + members + "]," + Status(myIsOnline)));
  }
  return {myVersion, mySnapshot};
}

}  // namespace corvane::web
