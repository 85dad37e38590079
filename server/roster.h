#pragma once

#include <cstddef>
#include <cstdint>
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

// Indexes over the listener's active connections: the members of each network that hear it, in
// hand-off order, and the number of sessions that hold each user name. They give the same answers
// as a walk over the active connections, but a report costs only its deliveries and a login does
// not examine every session. Also gathers the reports of each network and delivers them before the
// loop flushes or the network's members change. Borrows the loop.
class Roster {
 public:
  using Members = SnapshotList<std::shared_ptr<ClientSocket>>;

  explicit Roster(PollLoop& loop) : myLoop(loop) {}
  ~Roster();
  Roster(const Roster&) = delete;
  Roster& operator=(const Roster&) = delete;

  // Call these when a session has entered the active connections, or left them.
  void Enter(ClientSocket& session);
  void Leave(ClientSocket& session);

  // While it exists, the session, entered or not, may change its network, its name, and whether it
  // is logged in. A session that is Gone stays a member until it leaves the roster.
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

  // The sessions that hear this network, in hand-off order.
  Members::Snapshot MembersOf(const ServerNetworks& network) const;

  // Collects a report for the members of the sender's network; delivers it before the loop flushes.
  void Gather(const std::shared_ptr<ClientSocket>& sender, std::string_view packet);
  bool HasGathered() const { return !myGathered.empty(); }

  // Since the start: reports gathered, and each of them times its recipients.
  std::uint64_t Reports() const { return myReports; }
  std::uint64_t Deliveries() const { return myDeliveries; }

  // Whether most of the network's members that read are behind (Outbox::AreMostBehind).
  bool AreMostBehind(const ServerNetworks& network);

  // Whether no session but this one holds the folded name. Sessions that are not logged in hold the
  // empty one.
  bool IsNameFree(const std::string& foldedName, const ClientSocket& session) const;

 private:
  struct Group {
    explicit Group(BufferPool& pool) : outbox(pool) {}

    Members members;
    Outbox outbox;
  };

  void Deliver();

  PollLoop& myLoop;
  std::unordered_map<const ServerNetworks*, Group> myGroups;
  std::vector<Group*> myGathered;   // the groups with an outbox that is not empty
  std::size_t myGatheredBytes = 0;  // that their delivery writes
  std::uint64_t myReports = 0;
  std::uint64_t myDeliveries = 0;
  std::unordered_map<std::string, std::size_t> myNames;
};

}  // namespace corvane
