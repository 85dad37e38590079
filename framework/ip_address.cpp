#include "framework/ip_address.h"

#include <array>
#include <cassert>
#include <cstring>

#include <QHostAddress>
#include <QtEndian>

#include "framework/address_ranges.h"

namespace corvane {
namespace {

std::string AddressText(const QHostAddress& address) {
  constexpr std::string_view kIPv4InIPv6 = "::ffff:";
  std::string text = address.toString().toStdString();
  const bool isIPv4 = text.starts_with(kIPv4InIPv6) && text.find('.') != std::string::npos;
  return isIPv4 ? text.substr(kIPv4InIPv6.size()) : text;
}

}  // namespace

std::string AddressFromBytes(std::string_view bytes) {
  if (bytes.size() == sizeof(quint32)) {
    return AddressText(QHostAddress(qFromBigEndian<quint32>(bytes.data())));
  }
  Q_IPV6ADDR address;
  assert(bytes.size() == sizeof address);
  std::memcpy(&address, bytes.data(), sizeof address);
  return AddressText(QHostAddress(address));
}

std::optional<std::string> AddressFromText(std::string_view text) {
  if (IPv4FromText(text)) return std::string(text);
  // Qt also takes blanks around an address and an interface behind it.
  if (text.find(':') == std::string_view::npos ||
      text.find_first_not_of("0123456789abcdefABCDEF:.") != std::string_view::npos) {
    return std::nullopt;
  }
  const QHostAddress address(QString::fromLatin1(text.data(), static_cast<qsizetype>(text.size())));
  return address.isNull() ? std::nullopt : std::optional(AddressText(address));
}

std::string ClientRange(const std::string& address) {
  if (address.find(':') == std::string::npos) return address;
  Q_IPV6ADDR bytes = QHostAddress(QString::fromStdString(address)).toIPv6Address();
  std::memset(bytes.c + sizeof bytes / 2, 0, sizeof bytes / 2);
  return AddressText(QHostAddress(bytes)) + "/64";
}

}  // namespace corvane
