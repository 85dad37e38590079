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

// After so many wrong passwords within the rules' period each answer waits, twice as long after
// each further one, until a period has passed without one.
struct PasswordDelays {
  std::size_t free = 5;
  std::chrono::milliseconds first{1'000};
  std::chrono::milliseconds longest{30'000};
};

// How many lines one address may cause at once, and then one in each interval.
struct LineRate {
  int burst = 100;
  std::chrono::milliseconds interval{50};
};

// What strangers, members and administrators may do. Made when the server starts and given to
// whatever has to ask; nothing asks for more than the rule that it needs. docs/security.md tells
// what they are good for.
struct Rules {
  // For a circle of friends, who are trusted: the default.
  static Rules Classic();
  // For an operator who does not trust the network.
  static Rules Hardened();
  // What the settings "Hardened" and "TrustedAddresses" say.
  static Rules FromSettings(AppSettings& settings);

  std::string_view name = "classic";

  // Whether a message that meets a connection without a network ends the program, or skips it.
  bool isMessageFatalWithoutNetwork = true;
  // Whether commands 5, 6, 998 and 999 reach whoever has chosen a network, or its users only.
  bool isHeardBeforeLogIn = true;
  StatementValues statementValues = StatementValues::Pasted;
  // Whether administrators see and lift all bans, or those of their own network.
  bool areAllBansShown = true;
  // Whether user names may hold "|", at which records are cut, and what is not shown as it is.
  bool mayUserNameMislead = true;
  // Whether a seat is taken with the network's name already, or with the right password.
  bool isSeatTakenBeforePassword = true;

  // How long a client may take to log in, from its greeting; and to leave, from the notice that it
  // is kicked or banned. None: for ever.
  std::optional<std::chrono::milliseconds> timeToLogIn;
  std::optional<std::chrono::milliseconds> timeToLeave;

  // Of a whole message, in bytes.
  std::size_t longestBeforeLogIn = std::numeric_limits<std::size_t>::max();
  std::size_t longestAfterLogIn = std::numeric_limits<std::size_t>::max();

  // In bytes. A longer user name is refused; a longer reason of a ban is cut.
  std::size_t longestUserName = std::size_t{1} << 20;
  std::size_t longestReason = std::numeric_limits<std::size_t>::max();

  // Of the messages of one connection, unless its address is trusted.
  MessageRate rateBeforeLogIn;
  MessageRate rateAfterLogIn;

  // Of one address; none: no bound, and no delay.
  std::optional<ConnectionCounts> mostConnections;
  std::optional<PasswordDelays> passwordDelays;
  // Of the status log, by what sessions of one address do; none: no bound.
  std::optional<LineRate> statusLines;
  // In which wrong passwords count, and refused connections and lines left out are told together.
  std::chrono::milliseconds period{60'000};
  // These are not counted and not delayed.
  AddressRanges trustedAddresses;
};

}  // namespace corvane
