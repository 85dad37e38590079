#include "control/ctl/reach.h"

#include <chrono>
#include <cstdint>

#include <QEventLoop>
#include <QHostInfo>
#include <QUrl>

#include "client/connection.h"
#include "control/ctl/command_line.h"
#include "control/ctl/printing.h"

namespace corvane::ctl {
namespace {

using client::Connection;
using client::Ending;

constexpr int kPort = 12000;
constexpr int kTlsPort = 12443;
// For the connection, and again for the greeting, before which a server may look up the location.
constexpr std::chrono::seconds kPatience{10};

client::Destination DestinationOf(const QJsonObject& request) {
  client::Destination to;
  const QString fingerprint = request["fingerprint"].toString();
  if (request["tls"].toBool() || !fingerprint.isEmpty()) {
    const auto pinned = client::ParseFingerprint(fingerprint);
    if (!pinned && !fingerprint.isEmpty())
      throw UsageError("check-reach: --fingerprint takes 64 hexadecimal digits");
    to.tls = client::Tls{pinned.value_or(QByteArray()), {}};
  }
  QUrl url;
  url.setAuthority(request["host"].toString(), QUrl::StrictMode);
  to.host = url.host();
  to.port = static_cast<std::uint16_t>(url.port(to.tls ? kTlsPort : kPort));
  if (!url.isValid() || to.host.isEmpty() || to.port == 0)
    throw UsageError("check-reach: HOST is a name or an address, with :PORT if it is not 12000");
  return to;
}

void Resolve(const QString& host, Printer& printer) {
  const QHostInfo found = QHostInfo::fromName(host);
  if (found.addresses().isEmpty())
    throw Unreached(host + " is unknown: " + found.errorString() +
                    ". Check its spelling, and whether it was registered.");
  for (const QHostAddress& address : found.addresses()) {
    if (address.toString() != host)
      printer.PrintLine(host + " has the address " + address.toString());
  }
}

QString Explained(const Ending& ending) {
  const QString detail = QString::fromStdString(ending.text);
  switch (ending.cause) {
    case Ending::Cause::Unreachable:
      return "cannot connect: " + detail +
             ". If refused, nothing listens at this port, or a firewall rejects connections. "
             "If there is no answer, a firewall drops connections, the router does not forward "
             "the port, or the machine is off.";
    case Ending::Cause::Silent:
    case Ending::Cause::Lost:
      return "the connection was accepted, but no greeting came. Is the server running, and is "
             "the proxy in front of it in its ProxyAddresses?";
    case Ending::Cause::NotGreeted:
      return ending.Explanation() +
             " If this machine is in its ProxyAddresses, it greets only through the proxy.";
    case Ending::Cause::Malformed:
      return "something else than a Corvane server answers: " + detail;
    default:
      break;
  }
  return ending.Explanation();
}

}  // namespace

void CheckReach(const QJsonObject& request, Printer& printer) {
  const client::Destination to = DestinationOf(request);
  const QString place = to.host + ':' + QString::number(to.port);
  Resolve(to.host, printer);

  Connection connection({.loginTimeout = kPatience, .greetingTimeout = kPatience});
  QEventLoop loop;
  Ending end;
  const auto states = connection.StateChanged.Connect([&] {
    if (connection.CurrentState() == Connection::State::LoggingIn)
      printer.PrintLine(place + " accepts connections" + (to.tls ? ", encrypted" : ""));
    if (connection.CurrentState() == Connection::State::Online) connection.Close();
  });
  const auto ends = connection.SessionEnded.Connect([&](const Ending& ending) {
    end = ending;
    QMetaObject::invokeMethod(&loop, &QEventLoop::quit, Qt::QueuedConnection);
  });
  connection.Open(to);
  loop.exec();
  // It answers the greeting with the name of no network.
  const bool isGreeted =
      end.cause == Ending::Cause::NetworkRefused || end.cause == Ending::Cause::Left;
  if (!isGreeted) throw Unreached(place + ": " + Explained(end));
  printer.PrintLine("The server answers. Clients can use this address.");
}

}  // namespace corvane::ctl
