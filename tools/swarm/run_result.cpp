#include "tools/swarm/run_result.h"

#include <algorithm>

#include <QJsonDocument>
#include <QJsonObject>
#include <QString>

namespace corvane::swarm {

namespace {

double Microseconds(std::chrono::nanoseconds time) {
  return std::chrono::duration<double, std::micro>(time).count();
}

// JSON has doubles only; counts stay exact up to 2^53.
QJsonValue Number(std::uint64_t count) {
  return static_cast<qint64>(count);
}

double Each(std::chrono::nanoseconds time, std::uint64_t count) {
  return count > 0 ? Microseconds(time) / static_cast<double>(count) : 0;
}

QString Rounded(double number, int digits = 0) {
  return QString::number(number, 'f', digits);
}

QString LatencyText(const LatencyHistogram& latency) {
  return QString("p50 %1 p99 %2 max %3 us")
      .arg(Rounded(Microseconds(latency.Percentile(0.50))),
           Rounded(Microseconds(latency.Percentile(0.99))), Rounded(Microseconds(latency.Max())));
}

QJsonObject LatencyJson(const LatencyHistogram& latency) {
  return {{"p50", Microseconds(latency.Percentile(0.50))},
          {"p90", Microseconds(latency.Percentile(0.90))},
          {"p99", Microseconds(latency.Percentile(0.99))},
          {"p99.9", Microseconds(latency.Percentile(0.999))},
          {"max", Microseconds(latency.Max())}};
}

}  // namespace

bool RunResult::IsGood() const {
  const bool isWhole = !deliveries || (deliveries->expected > 0 && deliveries->missing == 0);
  const bool hasPlayed = !hostile || hostile->strangers.acted > 0;
  return elapsed.count() > 0 && isWhole && hasPlayed && visits != 0U && unexpected == 0 &&
         connectFailures == 0 && disconnects == 0;
}

double RunResult::PerSecond(std::uint64_t count) const {
  return elapsed.count() > 0 ? static_cast<double>(count) / elapsed.count() : 0;
}

std::string RunResult::ToText() const {
  QString text = QString("%1 %2x%3: %4 s")
                     .arg(QString::fromStdString(mode), QString::number(networks),
                          QString::number(users), Rounded(elapsed.count(), 1));
  if (deliveries) {
    text +=
        QString(", %1 reports, %2 of %3 deliveries, %4/s")
            .arg(QString::number(deliveries->sent), QString::number(deliveries->received),
                 QString::number(deliveries->expected), Rounded(PerSecond(deliveries->received)));
    text += QString(", latency %1").arg(LatencyText(deliveries->latency));
  }
  if (visits) {
    text += QString(", %1 logged in and left, %2/s")
                .arg(QString::number(*visits), Rounded(PerSecond(*visits)));
  }
  if (serverCpu && deliveries) {
    text += QString(", server %1 us per 1000 deliveries")
                .arg(Rounded(1000 * Each(*serverCpu, deliveries->received), 1));
  } else if (serverCpu && visits) {
    text += QString(", server %1 us each").arg(Rounded(Each(*serverCpu, *visits), 1));
  } else if (serverCpu) {
    text += QString(", server %1 % of a core").arg(Rounded(100 * ServerCpuShare(), 2));
  }
  if (const auto bytes = ServerBytesPerConnection()) {
    text += QString(", %1 bytes per connection").arg(Rounded(*bytes));
  }
  if (hostile) text += HostileText();
  if ((deliveries && deliveries->missing > 0) || unexpected > 0) {
    text += QString(", %1 MISSING, %2 UNEXPECTED")
                .arg(QString::number(deliveries ? deliveries->missing : 0),
                     QString::number(unexpected));
  }
  if (connectFailures > 0 || disconnects > 0) {
    text += QString(", %1 not logged in, %2 cut off")
                .arg(QString::number(connectFailures), QString::number(disconnects));
  }
  return text.toStdString();
}

QString RunResult::HostileText() const {
  const StrangerCounts& strangers = hostile->strangers;
  QString text =
      QString("; %1: %2 strangers greeted, %3 acted, %4 ended, %5 MiB sent")
          .arg(QString::fromStdString(hostile->attack), QString::number(strangers.greeted),
               QString::number(strangers.acted), QString::number(strangers.ended),
               QString::number(strangers.bytesSent >> 20));
  if (!strangers.refusal.empty()) {
    text += ", refused: " + QString::fromStdString(strangers.refusal).left(200);
  }
  for (std::size_t i = 0; i < hostile->windows.size(); ++i) {
    text += QString("; %1 %2").arg(AttackResult::kWindowNames[i],
                                   LatencyText(hostile->windows[i].latency));
  }
  if (serverPeakKib) text += QString("; peak %1 MiB").arg(*serverPeakKib / 1024);
  return text;
}

std::string RunResult::ToJson() const {
  QJsonObject json{{"mode", QString::fromStdString(mode)},
                   {"networks", Number(networks)},
                   {"users", Number(users)},
                   {"seconds", elapsed.count()},
                   {"unexpected", Number(unexpected)},
                   {"connect_failures", Number(connectFailures)},
                   {"disconnects", Number(disconnects)}};
  if (deliveries) AddDeliveries(json);
  if (hostile) AddHostile(json);
  if (visits) {
    json["visits"] = Number(*visits);
    json["visits_per_second"] = PerSecond(*visits);
    if (serverCpu) json["server_cpu_us_per_visit"] = Each(*serverCpu, *visits);
  }
  if (serverCpu) {
    json["server_cpu_seconds"] = Microseconds(*serverCpu) / 1e6;
    json["server_cpu_share"] = ServerCpuShare();
  }
  if (serverRssKib) json["server_rss_kib"] = qint64{*serverRssKib};
  if (serverPeakKib) json["server_peak_kib"] = qint64{*serverPeakKib};
  if (const auto bytes = ServerBytesPerConnection()) {
    json["server_rss_empty_kib"] = qint64{*emptyRssKib};
    json["server_rss_idle_kib"] = qint64{*idleRssKib};
    json["server_bytes_per_connection"] = *bytes;
  }
  return QJsonDocument(json).toJson(QJsonDocument::Compact).toStdString();
}

void RunResult::AddDeliveries(QJsonObject& json) const {
  json["sent"] = Number(deliveries->sent);
  json["expected"] = Number(deliveries->expected);
  json["received"] = Number(deliveries->received);
  json["missing"] = Number(deliveries->missing);
  json["deliveries_per_second"] = PerSecond(deliveries->received);
  json["latency_us"] = LatencyJson(deliveries->latency);
  if (serverCpu && deliveries->received > 0) {
    json["server_cpu_us_per_1000_deliveries"] = 1000 * Each(*serverCpu, deliveries->received);
  }
}

void RunResult::AddHostile(QJsonObject& json) const {
  json["attack"] = QString::fromStdString(hostile->attack);
  for (std::size_t i = 0; i < hostile->windows.size(); ++i) {
    const AttackResult::Window& window = hostile->windows[i];
    QJsonObject found{{"latency_us", LatencyJson(window.latency)},
                      {"lateness_us", LatencyJson(window.lateness)}};
    if (window.serverWait) {
      found["server_wait_seconds"] = Microseconds(*window.serverWait) / 1e6;
    }
    json[AttackResult::kWindowNames[i]] = found;
  }
  const StrangerCounts& strangers = hostile->strangers;
  json["strangers"] = QJsonObject{{"greeted", Number(strangers.greeted)},
                                  {"acted", Number(strangers.acted)},
                                  {"ended", Number(strangers.ended)},
                                  {"bytes_sent", Number(strangers.bytesSent)}};
}

double RunResult::ServerCpuShare() const {
  return elapsed.count() > 0 ? Microseconds(*serverCpu) / 1e6 / elapsed.count() : 0;
}

std::optional<double> RunResult::ServerBytesPerConnection() const {
  if (!emptyRssKib || !idleRssKib) return std::nullopt;
  return static_cast<double>(*idleRssKib - *emptyRssKib) * 1024 /
         static_cast<double>(networks * users);
}

bool RushResult::IsGood() const {
  return std::ranges::all_of(
      rounds, [&](const Round& round) { return round.greeted == clients && round.cutOff == 0; });
}

std::string RushResult::ToText() const {
  QString text = QString("rush of %1:").arg(clients);
  for (const Round& round : rounds) {
    text += QString(" %1 greeted, the last after %2 ms")
                .arg(round.greeted)
                .arg(Rounded(1000 * round.untilLastGreeted.count()));
    if (round.refused > 0) text += QString(", %1 REFUSED").arg(round.refused);
    if (round.cutOff > 0) text += QString(", %1 CUT OFF").arg(round.cutOff);
    if (Hung(round) > 0) text += QString(", %1 HUNG").arg(Hung(round));
    text += u';';
  }
  return text.chopped(1).toStdString();
}

std::string RushResult::ToJson() const {
  double longest = 0;
  for (const Round& round : rounds)
    longest = std::max(longest, 1000 * round.untilLastGreeted.count());
  const QJsonObject json{
      {"mode", "rush"}, {"clients", Number(clients)}, {"last_greeted_ms", longest}};
  return QJsonDocument(json).toJson(QJsonDocument::Compact).toStdString();
}

}  // namespace corvane::swarm
