#include "tools/swarm/rush_run.h"

#include <algorithm>
#include <stop_token>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QString>

#include "tools/swarm/hostile/stranger_pool.h"

namespace corvane::swarm {

namespace {

// One round: nobody does anything but wait for the greeting, and then stay.
class Arrival : public HostilePart {
 public:
  explicit Arrival(std::size_t clients)
      : HostilePart(
            {.strangers = clients, .connectAtOnce = clients, .patience = std::chrono::hours(24)}),
        myStart(Clock::now()) {}

  const RushResult::Round& Found() const { return myRound; }
  std::stop_token Stop() const { return myStop.get_token(); }

  void Act(Stranger& client) override { client.Hold(); }
  void Greeted(Stranger&) override {
    ++myRound.greeted;
    myRound.untilLastGreeted = Clock::now() - myStart;
    StopIfDone();
  }
  void Ended(Stranger& client, bool wasGreeted) override {
    ++(wasGreeted ? myRound.cutOff : myRound.refused);
    client.Hold();
    StopIfDone();
  }

 private:
  void StopIfDone() {
    if (myRound.greeted + myRound.refused == Custom().strangers) myStop.request_stop();
  }

  Clock::time_point myStart;
  RushResult::Round myRound;
  std::stop_source myStop;
};

double Milliseconds(std::chrono::duration<double> time) {
  return std::chrono::duration<double, std::milli>(time).count();
}

}  // namespace

bool RushResult::IsGood() const {
  return std::ranges::all_of(
      rounds, [&](const Round& round) { return round.greeted == clients && round.cutOff == 0; });
}

std::string RushResult::ToText() const {
  QString text = QStringLiteral("rush of %1:").arg(clients);
  for (const Round& round : rounds) {
    text += QStringLiteral(" %1 greeted, the last after %2 ms")
                .arg(round.greeted)
                .arg(Milliseconds(round.untilLastGreeted), 0, 'f', 0);
    if (round.refused > 0) text += QStringLiteral(", %1 REFUSED").arg(round.refused);
    if (round.cutOff > 0) text += QStringLiteral(", %1 CUT OFF").arg(round.cutOff);
    if (Hung(round) > 0) text += QStringLiteral(", %1 HUNG").arg(Hung(round));
    text += u';';
  }
  return text.chopped(1).toStdString();
}

std::string RushResult::ToJson() const {
  QJsonArray all;
  double longest = 0;
  for (const Round& round : rounds) {
    const double milliseconds = Milliseconds(round.untilLastGreeted);
    longest = std::max(longest, milliseconds);
    all.append(QJsonObject{{QStringLiteral("greeted"), static_cast<qint64>(round.greeted)},
                           {QStringLiteral("refused"), static_cast<qint64>(round.refused)},
                           {QStringLiteral("cut_off"), static_cast<qint64>(round.cutOff)},
                           {QStringLiteral("hung"), static_cast<qint64>(Hung(round))},
                           {QStringLiteral("last_greeted_ms"), milliseconds}});
  }
  const QJsonObject json{{QStringLiteral("mode"), QStringLiteral("rush")},
                         {QStringLiteral("clients"), static_cast<qint64>(clients)},
                         {QStringLiteral("rounds"), all},
                         {QStringLiteral("last_greeted_ms"), longest}};
  return QJsonDocument(json).toJson(QJsonDocument::Compact).toStdString();
}

RushResult RushRun::Execute() const {
  RushResult result;
  result.clients = myOptions.clients;
  for (std::size_t round = 0; round < myOptions.rounds; ++round)
    result.rounds.push_back(PlayRound());
  return result;
}

RushResult::Round RushRun::PlayRound() const {
  Arrival arrival(myOptions.clients);
  StrangerPool pool(myOptions.server, arrival, {});
  pool.Run(arrival.Stop(), Clock::now() + *myOptions.duration);
  return arrival.Found();
}

}  // namespace corvane::swarm
