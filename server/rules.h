#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string_view>

#include "framework/address_ranges.h"
#include "net/message_budget.h"
#include "storage/statement_values.h"

namespace corvane {

class AppSettings;

// How many connections one address may have.
struct ConnectionCounts {
  std::int32_t all = 64;
  std::int32_t notLoggedIn = 8;
};

// After `free` wrong passwords within the rules' period every answer to a password is delayed. The
// delay starts at `first`, doubles with each further wrong password up to `max`, and ends when a
// period passes without one.
struct PasswordDelays {
  std::size_t free = 5;
  std::chrono::milliseconds first{1'000};
  std::chrono::milliseconds max{30'000};
};

// An address may cause `burst` lines at once and then one in each interval.
struct LineRate {
  int burst = 100;
  std::chrono::milliseconds interval{50};
};

// What strangers, members and administrators may do. Made when the server starts; each part of the
// server asks only for the rule that it needs. docs/security.md explains what each is for.
struct Rules {
  // For a circle of friends, whom the operator trusts: the default.
  static Rules Classic();
  // For users whom the operator does not trust.
  static Rules Hardened();
  // Those that the settings "Hardened", "TrustedAddresses" and "ProxyAddresses" choose.
  static Rules FromSettings(AppSettings& settings);

  std::string_view name = "classic";

  // Whether a message ends the program when it meets a connection without a network, or skips it.
  bool isMessageFatalWithoutNetwork = true;
  // Whether commands 5, 6, 998 and 999 reach every client that has chosen the network, or only
  // those that are logged in.
  bool isHeardBeforeLogin = true;
  StatementValues statementValues = StatementValues::Pasted;
  // Whether administrators see and lift all bans, or only those of their network that never end.
  bool areAllBansShown = true;
  // Whether user names may contain "|", which separates the fields of records, and misleading
  // characters (visible_text.h).
  bool mayUserNameMislead = true;
  // Whether the network's name takes a seat, or only the right password does.
  bool isSeatTakenBeforePassword = true;

  // How long a client may take to log in after its greeting, and to leave after the notice that it
  // is kicked or banned. None: forever.
  std::optional<std::chrono::milliseconds> timeToLogin;
  std::optional<std::chrono::milliseconds> timeToLeave;

  // Bytes of a whole message. A longer one closes the connection.
  std::size_t maxMessageBeforeLogin = std::numeric_limits<std::size_t>::max();
  std::size_t maxMessageAfterLogin = std::numeric_limits<std::size_t>::max();

  // Bytes. A longer user name is refused; a longer reason for a ban is cut.
  std::size_t maxUserName = std::size_t{1} << 20;
  std::size_t maxReason = std::numeric_limits<std::size_t>::max();

  // Of the messages of one connection, unless its address is trusted. Messages above the rate wait.
  MessageRate rateBeforeLogin;
  MessageRate rateAfterLogin;

  // For one address. None: no bound, and no delay.
  std::optional<ConnectionCounts> maxConnections;
  std::optional<PasswordDelays> passwordDelays;
  // For the status lines about sessions of one address. None: no bound.
  std::optional<LineRate> statusLines;
  // How long a wrong password counts. Also how often refused connections and omitted lines are
  // summed up and reported.
  std::chrono::milliseconds period{60'000};
  // Not counted and not delayed.
  AddressRanges trustedAddresses;
  // Proxies, which begin each connection with a header that names its client.
  AddressRanges proxyAddresses;
};

}  // namespace corvane
