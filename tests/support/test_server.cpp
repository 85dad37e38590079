#include "tests/support/test_server.h"

#include <cstdlib>
#include <map>

#include "framework/exceptions.h"
#include "framework/text.h"

namespace corvane {

namespace {

constexpr QLatin1String kDatabase("serverdb.rsd");

}  // namespace

Rules HardenedInAHurry() {
  constexpr int kTimes = 20;
  Rules rules = Rules::Hardened();
  *rules.timeToLogin /= kTimes;
  *rules.timeToLeave /= kTimes;
  rules.passwordDelays->first /= kTimes;
  rules.passwordDelays->max /= kTimes;
  rules.period /= 2 * kTimes;
  return rules;
}

TestServer::TestServer(std::int32_t port, const Rules& rules,
                       const ConnectionMemory::Limits& limits)
    : loop([this] { uncaught.push_back(ClassNameOf(std::current_exception())); }, limits) {
  const QString file = folder.filePath(kDatabase);
  MakeDatabase(file);
  if (!database.Connect(file)) std::abort();
  listener = std::make_shared<MapSocket>(loop, database, locations, rules);
  myConnections = {listener->StatusMessage.Connect(
                       [this](MapSocket&, const std::string& text) { status.push_back(text); }),
                   listener->UserLoggedIn.Connect(
                       [this](MapSocket&, const std::shared_ptr<ClientSocket>& client) {
                         events.push_back("in " + client->Username());
                       }),
                   listener->UserLoggedOut.Connect(
                       [this](MapSocket&, const std::shared_ptr<ClientSocket>& client) {
                         events.push_back("out " + client->Username());
                       })};
  listener->NetworkInterface = NetworkInterface{"", "127.0.0.1"};
  listener->SetPort(port);
  listener->SetMaximumSocketsConnected(100'000);
  listener->Listen();
}

NetworkRef TestServer::AddNetwork(const std::string& name, const std::string& password,
                                  std::int32_t maxUsers, bool enabled) {
  listener->Networks.push_back(std::make_shared<ServerNetworks>(name, password, maxUsers, enabled));
  return listener->Networks.back();
}

std::shared_ptr<ClientSocket> TestServer::Active(std::size_t index) const {
  return std::static_pointer_cast<ClientSocket>(listener->ActiveConnections()->at(index));
}

std::shared_ptr<ClientSocket> TestServer::SessionOf(const std::string& userName) const {
  for (std::size_t i = 0; i < ActiveCount(); ++i) {
    if (SameText(Active(i)->Username(), userName)) return Active(i);
  }
  return nullptr;
}

std::string TestServer::Query(const std::string& statements) const {
  return OtherProgram(folder.filePath(kDatabase)).Run(statements);
}

std::string TestServer::Fault() const {
  struct Count {
    std::vector<const ClientSocket*> members;
    std::int32_t seats = 0;
  };
  std::map<const ServerNetworks*, Count> counts;
  for (const NetworkRef& network : listener->Networks)
    counts[network.get()];
  for (std::size_t i = 0; i < ActiveCount(); ++i) {
    const auto session = Active(i);
    bool isNameFree = true;
    for (std::size_t j = 0; j < ActiveCount(); ++j) {
      if (j != i && SameText(Active(j)->Username(), session->Username())) isNameFree = false;
    }
    if (session->CanLogin(session->FoldedUsername()) != isNameFree) return "names";
    if (session->myNetwork == nullptr) continue;
    Count& count = counts[session->myNetwork.get()];
    if (listener->Context.rules.isHeardBeforeLogin ||
        session->LoginState() == ClientSocket::State::LoggedIn) {
      count.members.push_back(session.get());
    }
    if (session->HoldsSeat()) ++count.seats;
  }
  for (const auto& [network, count] : counts) {
    std::vector<const ClientSocket*> indexed;
    for (const auto& member : *listener->Context.roster.MembersOf(*network)) {
      indexed.push_back(member.get());
    }
    if (indexed != count.members) return "members of " + network->NetworkName;
    if (network->CurrentUsers != count.seats) return "seats of " + network->NetworkName;
  }
  return {};
}

}  // namespace corvane
