#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "framework/snapshot_list.h"
#include "server/outbox.h"
#include "server/server_networks.h"

namespace corvane {

class ClientSocket;
class PollLoop;

// Indexes over the listener's active connections, so that a report costs what it delivers and a
// log-in does not look at everybody: the members of each network who hear it, in hand-off order,
// and how many sessions hold each user name. They always say what a walk over the active
// connections would. Each network's reports are gathered here too, and delivered before its members
// change. Borrows the loop.
class Roster {
 public:
  using Members = SnapshotList<std::shared_ptr<ClientSocket>>;

  explicit Roster(PollLoop& loop) : myLoop(loop) {}
  ~Roster();
  Roster(const Roster&) = delete;
  Roster& operator=(const Roster&) = delete;

  // A session entered or left the active connections.
  void Enter(ClientSocket& session);
  void Leave(ClientSocket& session);

  // While one exists, the session, which may have entered, may change its network, its name, and
  // whether it is logged in. One that has gone stays a member until it leaves the roster.
  class Change {
   public:
    Change(Roster& roster, ClientSocket& session) : myRoster(roster), mySession(session) {
      myRoster.Leave(mySession);
    }
    ~Change();
    Change(const Change&) = delete;
    Change& operator=(const Change&) = delete;

   private:
    Roster& myRoster;
    ClientSocket& mySession;
  };

  // Everybody who hears what this network's members hear, in hand-off order.
  Members::Snapshot MembersOf(const ServerNetworks& network) const;

  // Takes a report, which the members of the sender's network are sent before the loop flushes.
  void Gather(const std::shared_ptr<ClientSocket>& sender, std::string_view packet);
  bool HasGathered() const { return !myGathered.empty(); }

  // Whether most of the network's members who read are behind with what was relayed to them.
  bool AreMostBehind(const ServerNetworks& network);

  // Whether no other session than this one holds the folded name. Sessions that have not logged in
  // hold the empty one.
  bool IsNameFree(const std::string& foldedName, const ClientSocket& session) const;

 private:
  struct Group {
    explicit Group(BufferPool& pool) : outbox(pool) {}

    Members members;
    Outbox outbox;
  };

  // Sends to all members what was gathered.
  void Deliver();

  PollLoop& myLoop;
  std::unordered_map<const ServerNetworks*, Group> myGroups;
  std::vector<Group*> myGathered;   // those whose outbox is not empty
  std::size_t myGatheredBytes = 0;  // what their delivery writes
  std::unordered_map<std::string, std::size_t> myNames;
};

}  // namespace corvane
