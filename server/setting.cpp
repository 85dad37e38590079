#include "server/setting.h"

#include <algorithm>
#include <array>
#include <cctype>

#include <QUrl>

#include "framework/address_ranges.h"
#include "framework/numbers.h"
#include "framework/status_line.h"
#include "framework/text.h"
#include "storage/app_settings.h"

namespace corvane {
namespace {

using Words = std::array<std::string_view, 4>;

bool IsOneOf(const Words& words, std::string_view value) {
  return std::ranges::any_of(words,
                             [value](std::string_view word) { return SameText(word, value); });
}

bool IsOff(std::string_view value) {
  return Trimmed(value).empty() || IsOneOf({"0", "no", "false", "off"}, Trimmed(value));
}

bool IsSwitch(std::string_view value) {
  return IsOff(value) || IsOneOf({"1", "yes", "true", "on"}, Trimmed(value));
}

template <int min, int max>
bool IsWholeNumber(std::string_view value) {
  const double number = NumberFromText(value);
  return IsNumeric(value) && number >= min && number <= max && number == Int32FromText(value);
}

// A MAC address, "none" for all interfaces, or nothing: tunnels have no MAC address.
bool IsInterface(std::string_view value) {
  if (value.empty() || SameText(value, "none")) return true;
  for (std::size_t i = 0; i < value.size(); ++i) {
    const auto unit = static_cast<unsigned char>(value[i]);
    if (i % 3 == 2 ? unit != ':' : std::isxdigit(unit) == 0) return false;
  }
  constexpr std::size_t kMinLength = 17;  // 00:1A:2B:3C:4D:5E
  return value.size() >= kMinLength && value.size() % 3 == 2;
}

bool IsWebAddress(std::string_view value) {
  if (value.empty()) return true;
  const QUrl url(DisplayText(value), QUrl::StrictMode);
  const QString scheme = url.scheme();
  return url.isValid() && (scheme == "http" || scheme == "https") && !url.host().isEmpty();
}

bool AreAddresses(std::string_view value) {
  return AddressRanges(value).IsComplete();
}

bool IsText(std::string_view) {
  return true;
}

constexpr std::string_view kSwitch = "1, yes, true or on, or else 0, no, false, off or nothing";
constexpr std::string_view kPort = "a port from 0 to 65535";
constexpr std::string_view kWebAddress = "an address such as https://example.org/path, or nothing";
constexpr std::string_view kAddresses =
    "IPv4 addresses and prefixes such as 192.0.2.17, 10.0.0.0/8, or nothing";
constexpr std::string_view kCountsAsOn = "it counts as on";
constexpr std::string_view kOtherEntries = "its other entries do not count";

constexpr std::array kSettings = {
    Setting{"AttachedNIC", "a MAC address such as 52:54:00:12:34:56, or none for all interfaces",
            IsInterface, "the server listens on all interfaces unless one has this address"},
    Setting{"AttachedPort", kPort, IsWholeNumber<0, 65535>},
    Setting{"MaxConns",
            "a number from 2 to 9999",
            IsWholeNumber<2, 9999>,
            {},
            "the server ignores MaxConns"},
    Setting{"Port",
            kPort,
            IsWholeNumber<0, 65535>,
            {},
            "the server ignores Port; its port is AttachedPort"},
    Setting{"StartHidden", kSwitch, IsSwitch, kCountsAsOn},
    Setting{"Hardened", kSwitch, IsSwitch, kCountsAsOn},
    Setting{"TrustedAddresses", kAddresses, AreAddresses, kOtherEntries},
    Setting{"ProxyAddresses", kAddresses, AreAddresses, kOtherEntries},
    Setting{"LocationDatabase", "a file, or nothing", IsText},
    Setting{"LocatorAddress", kWebAddress, IsWebAddress},
    Setting{"FlagAddress", kWebAddress, IsWebAddress},
    Setting{"UpdateAddress", kWebAddress, IsWebAddress},
};

}  // namespace

std::string Setting::Refusal(std::string_view value) const {
  return StatusLine({name, " takes ", expected, "; not \"", value, "\""});
}

std::span<const Setting> KnownSettings() {
  return kSettings;
}

const Setting* FindSetting(std::string_view name) {
  const auto found = std::ranges::find_if(
      kSettings, [name](const Setting& setting) { return SameText(setting.name, name); });
  return found == kSettings.end() ? nullptr : &*found;
}

std::vector<std::string> FaultsOf(const AppSettings& settings) {
  std::vector<std::string> faults;
  for (const auto& [name, value] : settings.Values()) {
    const Setting* const setting = FindSetting(name);
    if (setting == nullptr) {
      faults.push_back(StatusLine({"Settings: there is no setting \"", name, "\""}));
    } else if (!setting->takes(value)) {
      faults.push_back(StatusLine({"Settings: ", setting->Refusal(value),
                                   setting->otherwise.empty() ? "" : "; ", setting->otherwise}));
    }
  }
  return faults;
}

bool IsOn(std::string_view value) {
  return !IsOff(value);
}

}  // namespace corvane
