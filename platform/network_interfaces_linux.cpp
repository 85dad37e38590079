#include <algorithm>

#include <QNetworkInterface>

#include "platform/network_interfaces.h"

namespace corvane {

namespace {

bool IsUsable(const QNetworkInterface& device) {
  const auto flags = device.flags();
  return flags.testFlag(QNetworkInterface::IsUp) && !flags.testFlag(QNetworkInterface::IsLoopBack);
}

}  // namespace

std::vector<NetworkInterface> NetworkInterfaces() {
  QList<QNetworkInterface> devices = QNetworkInterface::allInterfaces();
  std::ranges::stable_sort(devices, {}, &QNetworkInterface::index);
  std::vector<NetworkInterface> interfaces;
  for (const QNetworkInterface& device : std::as_const(devices)) {
    if (!IsUsable(device)) continue;
    const QList<QNetworkAddressEntry> entries = device.addressEntries();
    const auto found = std::ranges::find(entries, QAbstractSocket::IPv4Protocol,
                                         [](const auto& entry) { return entry.ip().protocol(); });
    if (found == entries.end()) continue;
    interfaces.push_back(
        {device.hardwareAddress().toStdString(), found->ip().toString().toStdString()});
  }
  return interfaces;
}

}  // namespace corvane
