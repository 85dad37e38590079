// Feeds a server's stream to client sessions, in pieces and at once: both report the same, end at
// the same place and know the same members.

#include <cstdint>
#include <cstdlib>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "client/session.h"

namespace {

using namespace corvane::client;

class Listener : public SessionEvents, public MembersWatcher {
 public:
  Listener() { members.Watch(*this); }

  void Receive(std::string_view bytes) {
    session.Receive(bytes, {});
    // Like a connection, after each piece.
    if (session.IsLoggedIn()) session.AskForMembers();
  }

  void LoggedIn() override { heard.emplace_back("in"); }
  void Listed(bool isAdministrator) override { heard.emplace_back(isAdministrator ? "1" : "0"); }
  void Said(std::string_view text) override { heard.emplace_back(text); }
  void BansListed(const BanList& list) override {
    for (const Ban& ban : list.bans)
      heard.push_back(ban.id + ban.address + ban.by + ban.reason + ban.date);
  }
  void Ended(const Ending& ending) override {
    if (hasEnded || ending.Explanation().isEmpty()) std::abort();
    hasEnded = true;
    heard.push_back(ending.text);
  }

  // The events of members match the members.
  void Added(const Member& member) override { Expect(names.emplace(&member, member.name).second); }
  void Changed(const Member& member) override {
    Expect(names.contains(&member));
    names[&member] = member.name;
  }
  void Removed(const Member& member) override {
    const auto place = names.find(&member);
    Expect(place != names.end() && place->second == member.name);
    names.erase(place);
  }

  static void Expect(bool holds) {
    if (!holds) std::abort();
  }

  Members members;
  Session session{{"Demo", "digest", "Ann"}, members, *this};
  std::map<const Member*, std::string> names;
  std::vector<std::string> heard;
  bool hasEnded = false;
};

}  // namespace

// The first byte gives the size of the pieces, the rest is the stream.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const std::string_view stream(reinterpret_cast<const char*>(data) + 1, size - 1);
  const std::size_t piece = data[0] % 16U + 1U;

  Listener whole;
  whole.session.Receive(stream, {});
  Listener pieces;
  for (std::size_t at = 0; at < stream.size(); at += piece)
    pieces.session.Receive(stream.substr(at, piece), {});
  Listener::Expect(pieces.heard == whole.heard && pieces.hasEnded == whole.hasEnded);
  Listener::Expect(pieces.members.Count() == whole.members.Count());

  // Asking for the list in between removes members that are not listed again.
  Listener asking;
  for (std::size_t at = 0; at < stream.size(); at += piece)
    asking.Receive(stream.substr(at, piece));
  Listener::Expect(asking.heard == whole.heard);
  for (const Listener* each : {&whole, &pieces, &asking})
    Listener::Expect(each->names.size() == each->members.Count());
  return 0;
}
