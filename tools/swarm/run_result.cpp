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
  return QStringLiteral("p50 %1 p99 %2 max %3 us")
      .arg(Rounded(Microseconds(latency.Percentile(0.50))),
           Rounded(Microseconds(latency.Percentile(0.99))), Rounded(Microseconds(latency.Max())));
}

QJsonObject LatencyJson(const LatencyHistogram& latency) {
  return {{QStringLiteral("p50"), Microseconds(latency.Percentile(0.50))},
          {QStringLiteral("p90"), Microseconds(latency.Percentile(0.90))},
          {QStringLiteral("p99"), Microseconds(latency.Percentile(0.99))},
          {QStringLiteral("p99.9"), Microseconds(latency.Percentile(0.999))},
          {QStringLiteral("max"), Microseconds(latency.Max())}};
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
  QString text = QStringLiteral("%1 %2x%3: %4 s")
                     .arg(QString::fromStdString(mode), QString::number(networks),
                          QString::number(users), Rounded(elapsed.count(), 1));
  if (deliveries) {
    text +=
        QStringLiteral(", %1 reports, %2 of %3 deliveries, %4/s")
            .arg(QString::number(deliveries->sent), QString::number(deliveries->received),
                 QString::number(deliveries->expected), Rounded(PerSecond(deliveries->received)));
    text += QStringLiteral(", latency %1").arg(LatencyText(deliveries->latency));
  }
  if (visits) {
    text += QStringLiteral(", %1 logged in and left, %2/s")
                .arg(QString::number(*visits), Rounded(PerSecond(*visits)));
  }
  if (serverCpu && deliveries) {
    text += QStringLiteral(", server %1 us per 1000 deliveries")
                .arg(Rounded(1000 * Each(*serverCpu, deliveries->received), 1));
  } else if (serverCpu && visits) {
    text += QStringLiteral(", server %1 us each").arg(Rounded(Each(*serverCpu, *visits), 1));
  } else if (serverCpu) {
    text += QStringLiteral(", server %1 % of a core").arg(Rounded(100 * ServerCpuShare(), 2));
  }
  if (const auto bytes = ServerBytesPerConnection()) {
    text += QStringLiteral(", %1 bytes per connection").arg(Rounded(*bytes));
  }
  if (hostile) text += HostileText();
  if ((deliveries && deliveries->missing > 0) || unexpected > 0) {
    text += QStringLiteral(", %1 MISSING, %2 UNEXPECTED")
                .arg(QString::number(deliveries ? deliveries->missing : 0),
                     QString::number(unexpected));
  }
  if (connectFailures > 0 || disconnects > 0) {
    text += QStringLiteral(", %1 not logged in, %2 cut off")
                .arg(QString::number(connectFailures), QString::number(disconnects));
  }
  return text.toStdString();
}

QString RunResult::HostileText() const {
  const StrangerCounts& strangers = hostile->strangers;
  QString text = QStringLiteral("; %1: %2 strangers greeted, %3 acted, %4 ended, %5 MiB sent")
                     .arg(QString::fromStdString(hostile->part), QString::number(strangers.greeted),
                          QString::number(strangers.acted), QString::number(strangers.ended),
                          QString::number(strangers.bytesSent >> 20));
  if (!strangers.refusal.empty()) {
    text += QStringLiteral(", refused: ") + QString::fromStdString(strangers.refusal).left(200);
  }
  for (std::size_t i = 0; i < hostile->windows.size(); ++i) {
    text += QStringLiteral("; %1 %2").arg(QLatin1String(HostileAccount::kWindowNames[i]),
                                          LatencyText(hostile->windows[i].latency));
  }
  if (serverPeakKib) text += QStringLiteral("; peak %1 MiB").arg(*serverPeakKib / 1024);
  return text;
}

std::string RunResult::ToJson() const {
  QJsonObject json{{QStringLiteral("mode"), QString::fromStdString(mode)},
                   {QStringLiteral("networks"), Number(networks)},
                   {QStringLiteral("users"), Number(users)},
                   {QStringLiteral("seconds"), elapsed.count()},
                   {QStringLiteral("unexpected"), Number(unexpected)},
                   {QStringLiteral("connect_failures"), Number(connectFailures)},
                   {QStringLiteral("disconnects"), Number(disconnects)}};
  if (deliveries) AddDeliveries(json);
  if (hostile) AddHostile(json);
  if (visits) {
    json[QStringLiteral("visits")] = Number(*visits);
    json[QStringLiteral("visits_per_second")] = PerSecond(*visits);
    if (serverCpu) json[QStringLiteral("server_cpu_us_per_visit")] = Each(*serverCpu, *visits);
  }
  if (serverCpu) {
    json[QStringLiteral("server_cpu_seconds")] = Microseconds(*serverCpu) / 1e6;
    json[QStringLiteral("server_cpu_share")] = ServerCpuShare();
  }
  if (serverRssKib) json[QStringLiteral("server_rss_kib")] = qint64{*serverRssKib};
  if (serverPeakKib) json[QStringLiteral("server_peak_kib")] = qint64{*serverPeakKib};
  if (const auto bytes = ServerBytesPerConnection()) {
    json[QStringLiteral("server_rss_empty_kib")] = qint64{*emptyRssKib};
    json[QStringLiteral("server_rss_idle_kib")] = qint64{*idleRssKib};
    json[QStringLiteral("server_bytes_per_connection")] = *bytes;
  }
  return QJsonDocument(json).toJson(QJsonDocument::Compact).toStdString();
}

void RunResult::AddDeliveries(QJsonObject& json) const {
  json[QStringLiteral("sent")] = Number(deliveries->sent);
  json[QStringLiteral("expected")] = Number(deliveries->expected);
  json[QStringLiteral("received")] = Number(deliveries->received);
  json[QStringLiteral("missing")] = Number(deliveries->missing);
  json[QStringLiteral("deliveries_per_second")] = PerSecond(deliveries->received);
  json[QStringLiteral("latency_us")] = LatencyJson(deliveries->latency);
  if (serverCpu && deliveries->received > 0) {
    json[QStringLiteral("server_cpu_us_per_1000_deliveries")] =
        1000 * Each(*serverCpu, deliveries->received);
  }
}

void RunResult::AddHostile(QJsonObject& json) const {
  json[QStringLiteral("part")] = QString::fromStdString(hostile->part);
  for (std::size_t i = 0; i < hostile->windows.size(); ++i) {
    const HostileAccount::Window& window = hostile->windows[i];
    QJsonObject found{{QStringLiteral("latency_us"), LatencyJson(window.latency)},
                      {QStringLiteral("lateness_us"), LatencyJson(window.lateness)}};
    if (window.serverWait) {
      found[QStringLiteral("server_wait_seconds")] = Microseconds(*window.serverWait) / 1e6;
    }
    json[QLatin1String(HostileAccount::kWindowNames[i])] = found;
  }
  const StrangerCounts& strangers = hostile->strangers;
  json[QStringLiteral("strangers")] =
      QJsonObject{{QStringLiteral("greeted"), Number(strangers.greeted)},
                  {QStringLiteral("acted"), Number(strangers.acted)},
                  {QStringLiteral("ended"), Number(strangers.ended)},
                  {QStringLiteral("bytes_sent"), Number(strangers.bytesSent)}};
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
  QString text = QStringLiteral("rush of %1:").arg(clients);
  for (const Round& round : rounds) {
    text += QStringLiteral(" %1 greeted, the last after %2 ms")
                .arg(round.greeted)
                .arg(Rounded(1000 * round.untilLastGreeted.count()));
    if (round.refused > 0) text += QStringLiteral(", %1 REFUSED").arg(round.refused);
    if (round.cutOff > 0) text += QStringLiteral(", %1 CUT OFF").arg(round.cutOff);
    if (Hung(round) > 0) text += QStringLiteral(", %1 HUNG").arg(Hung(round));
    text += u';';
  }
  return text.chopped(1).toStdString();
}

std::string RushResult::ToJson() const {
  double longest = 0;
  for (const Round& round : rounds)
    longest = std::max(longest, 1000 * round.untilLastGreeted.count());
  const QJsonObject json{{QStringLiteral("mode"), QStringLiteral("rush")},
                         {QStringLiteral("clients"), Number(clients)},
                         {QStringLiteral("last_greeted_ms"), longest}};
  return QJsonDocument(json).toJson(QJsonDocument::Compact).toStdString();
}

}  // namespace corvane::swarm
