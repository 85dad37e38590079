#include "tools/swarm/run_result.h"

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

}  // namespace

bool RunResult::IsGood() const {
  return expected > 0 && missing == 0 && unexpected == 0 && connectFailures == 0 &&
         disconnects == 0;
}

double RunResult::DeliveriesPerSecond() const {
  return elapsed.count() > 0 ? static_cast<double>(received) / elapsed.count() : 0;
}

std::optional<double> RunResult::ServerCpuPer1000Deliveries() const {
  if (!serverCpu || received == 0) return std::nullopt;
  return Microseconds(*serverCpu) * 1000 / static_cast<double>(received);
}

std::string RunResult::ToText() const {
  QString text =
      QStringLiteral("%1 %2x%3: %4 s, %5 reports, %6 of %7 deliveries, %8/s")
          .arg(QString::fromStdString(mode), QString::number(networks), QString::number(users),
               QString::number(elapsed.count(), 'f', 1), QString::number(sent),
               QString::number(received), QString::number(expected),
               QString::number(DeliveriesPerSecond(), 'f', 0));
  text += QStringLiteral(", latency p50 %1 p99 %2 max %3 us")
              .arg(QString::number(Microseconds(latency.Percentile(0.50)), 'f', 0),
                   QString::number(Microseconds(latency.Percentile(0.99)), 'f', 0),
                   QString::number(Microseconds(latency.Max()), 'f', 0));
  if (const auto cpu = ServerCpuPer1000Deliveries()) {
    text += QStringLiteral(", server %1 us per 1000 deliveries").arg(*cpu, 0, 'f', 1);
  }
  if (missing > 0 || unexpected > 0) {
    text += QStringLiteral(", %1 MISSING, %2 UNEXPECTED")
                .arg(QString::number(missing), QString::number(unexpected));
  }
  if (connectFailures > 0 || disconnects > 0) {
    text += QStringLiteral(", %1 not logged in, %2 cut off")
                .arg(QString::number(connectFailures), QString::number(disconnects));
  }
  return text.toStdString();
}

std::string RunResult::ToJson() const {
  QJsonObject json{{QStringLiteral("mode"), QString::fromStdString(mode)},
                   {QStringLiteral("networks"), Number(networks)},
                   {QStringLiteral("users"), Number(users)},
                   {QStringLiteral("seconds"), elapsed.count()},
                   {QStringLiteral("sent"), Number(sent)},
                   {QStringLiteral("expected"), Number(expected)},
                   {QStringLiteral("received"), Number(received)},
                   {QStringLiteral("missing"), Number(missing)},
                   {QStringLiteral("unexpected"), Number(unexpected)},
                   {QStringLiteral("connect_failures"), Number(connectFailures)},
                   {QStringLiteral("disconnects"), Number(disconnects)},
                   {QStringLiteral("deliveries_per_second"), DeliveriesPerSecond()},
                   {QStringLiteral("latency_us"),
                    QJsonObject{{QStringLiteral("p50"), Microseconds(latency.Percentile(0.50))},
                                {QStringLiteral("p90"), Microseconds(latency.Percentile(0.90))},
                                {QStringLiteral("p99"), Microseconds(latency.Percentile(0.99))},
                                {QStringLiteral("p99.9"), Microseconds(latency.Percentile(0.999))},
                                {QStringLiteral("max"), Microseconds(latency.Max())}}}};
  if (serverCpu) {
    json[QStringLiteral("server_cpu_seconds")] = Microseconds(*serverCpu) / 1e6;
  }
  if (const auto cpu = ServerCpuPer1000Deliveries()) {
    json[QStringLiteral("server_cpu_us_per_1000_deliveries")] = *cpu;
  }
  if (serverRssKib) json[QStringLiteral("server_rss_kib")] = qint64{*serverRssKib};
  if (emptyRssKib && idleRssKib) {
    const auto connections = static_cast<double>(networks * users);
    json[QStringLiteral("server_rss_empty_kib")] = qint64{*emptyRssKib};
    json[QStringLiteral("server_rss_idle_kib")] = qint64{*idleRssKib};
    json[QStringLiteral("server_bytes_per_connection")] =
        static_cast<double>(*idleRssKib - *emptyRssKib) * 1024 / connections;
  }
  return QJsonDocument(json).toJson(QJsonDocument::Compact).toStdString();
}

}  // namespace corvane::swarm
