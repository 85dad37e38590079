#include "web/network_feed.h"

#include <algorithm>
#include <utility>

#include <QJsonDocument>
#include <QJsonObject>

#include "framework/text.h"
#include "framework/visible_text.h"

namespace corvane::web {
namespace {

constexpr std::chrono::milliseconds kMinTick{250};
constexpr int kMaxBatches = 240;  // that wait for the end of their delay
// After a failure, and after one such as a wrong password or a ban.
constexpr std::chrono::seconds kRetry{10};
constexpr std::chrono::seconds kRetryAfterRefusal{60};
constexpr std::size_t kMaxName = 64;  // characters

QString Initials(const QString& name) {
  QString initials;
  for (const QString& word : name.split(' ', Qt::SkipEmptyParts)) {
    const char32_t first = word.toUcs4().first();
    if (initials.size() < 3) initials += QString::fromUcs4(&first, 1).toUpper();
  }
  return initials;
}

const char* StateOf(const client::Report& report) {
  if (report.isDead) return "dead";
  return report.inBattle ? "fighting" : "alive";
}

}  // namespace

NetworkFeed::NetworkFeed(WebNetwork network, Channel& channel)
    : myNetwork(std::move(network)), myChannel(channel), myConnection({}) {
  myConnection.Others().Watch(*this);
  myTick.callOnTimeout([this] { Tick(); });
  myTick.start(std::max<std::chrono::milliseconds>(kMinTick, myNetwork.shown.delay / kMaxBatches));
  myRetry.setSingleShot(true);
  myRetry.callOnTimeout([this] { Start(); });
  myEnded = myConnection.SessionEnded.Connect([this](const client::Ending& ending) {
    Reported(myNetwork.id + ": " + ending.Explanation());
    if (myConnection.CurrentState() == client::Connection::State::Offline)
      myRetry.start(ending.AllowsReconnect() ? kRetry : kRetryAfterRefusal);
  });
  myStateChanged = myConnection.StateChanged.Connect([this] {
    if (myConnection.CurrentState() == client::Connection::State::Online)
      Reported(myNetwork.id + ": logged in");
  });
}

NetworkFeed::~NetworkFeed() {
  myConnection.Others().Unwatch(*this);
}

void NetworkFeed::Start() {
  myConnection.Open(myNetwork.destination);
}

void NetworkFeed::Removed(const client::Member& member) {
  myChanged.erase(&member);
  const auto id = myIds.find(&member);
  if (id == myIds.end()) return;
  myLeft.insert(id->second);
  myIds.erase(id);
}

bool NetworkFeed::IsShown(const client::Member& member) const {
  const QList<int>& facets = myNetwork.shown.facets;
  return member.hasPlace && (facets.isEmpty() || facets.contains(member.report.facet));
}

void NetworkFeed::Tick() {
  const auto now = client::Clock::now();
  Channel::Update update;
  update.left = std::exchange(myLeft, {});
  update.isOnline = myConnection.CurrentState() == client::Connection::State::Online;
  for (const client::Member* const member : std::exchange(myChanged, {})) {
    const auto known = myIds.find(member);
    if (IsShown(*member)) {
      const int id = known == myIds.end() ? ++myLastId : known->second;
      myIds[member] = id;
      update.changed[id] = FieldsOf(*member, id);
    } else if (known != myIds.end()) {
      update.left.insert(known->second);
      myIds.erase(known);
    }
  }
  myBatches.push_back({now + myNetwork.shown.delay, std::move(update)});
  for (; !myBatches.empty() && myBatches.front().due <= now; myBatches.pop_front())
    myChannel.Publish(myBatches.front().update);
}

std::string NetworkFeed::FieldsOf(const client::Member& member, int id) const {
  const Shown& shown = myNetwork.shown;
  const client::Report& report = member.report;
  QJsonObject fields{{"id", id}, {"x", report.x}, {"y", report.y}, {"facet", report.facet}};
  const QString name = VisibleText(member.name, kMaxName);
  if (shown.names == Shown::Names::Full) fields["name"] = name;
  if (shown.names == Shown::Names::Initials) fields["name"] = Initials(name);
  if (shown.hitPoints) fields["hitPoints"] = report.hp;
  if (shown.state) fields["state"] = StateOf(report);
  const QByteArray json = QJsonDocument(fields).toJson(QJsonDocument::Compact);
  return json.mid(1, json.size() - 2).toStdString();
}

}  // namespace corvane::web
