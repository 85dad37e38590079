#pragma once

#include <deque>
#include <functional>
#include <map>
#include <set>
#include <string>

#include <QTimer>

#include "client/connection.h"
#include "web/channel.h"
#include "web/config.h"

namespace corvane::web {

// Logs into a network as a member and publishes the others, as far as its links show them, at most
// four times a second and with the delay of its settings. Comes back by itself after any ending,
// the refusals too, since nobody is there to try again. Borrows the channel.
class NetworkFeed : private client::MembersWatcher {
 public:
  NetworkFeed(WebNetwork network, Channel& channel);
  ~NetworkFeed() override;
  NetworkFeed(const NetworkFeed&) = delete;
  NetworkFeed& operator=(const NetworkFeed&) = delete;

  // Event: a line for the operator about the connection.
  std::function<void(const QString&)> Reported;

  void Start();

 private:
  struct Batch {
    client::Clock::time_point due;
    Channel::Update update;
  };

  void Added(const client::Member& member) override { myChanged.insert(&member); }
  void Changed(const client::Member& member) override { myChanged.insert(&member); }
  void Removed(const client::Member& member) override;
  void Tick();
  bool IsShown(const client::Member& member) const;
  std::string FieldsOf(const client::Member& member, int id) const;

  const WebNetwork myNetwork;
  Channel& myChannel;
  client::Connection myConnection;
  SignalConnection myEnded;
  SignalConnection myStateChanged;
  QTimer myTick;
  QTimer myRetry;
  std::map<const client::Member*, int> myIds;  // of the members that are shown
  int myLastId = 0;
  std::set<const client::Member*> myChanged;  // since the last tick
  std::set<int> myLeft;
  std::deque<Batch> myBatches;  // not published yet
};

}  // namespace corvane::web
