#pragma once

#include <string>

#include <QString>

namespace corvane::client {

// Why a connection has ended.
struct Ending {
  enum class Cause {
    Left,            // the user left
    Unreachable,     // no connection came about; the text is the system's
    Lost,            // it broke; the text is the system's
    Silent,          // the server answers no more
    NetworkRefused,  // a step of the log-in was answered "FAIL"
    PasswordRefused,
    UserNameRefused,
    AddressBanned,  // told instead of the greeting; the text is the server's
    Kicked,         // the text is the reason
    Banned,         // the text is the reason
    Dismissed,      // the server said "BYE"
    Malformed       // it sent what no server sends; the text says what
  };

  Cause cause = Cause::Left;
  std::string text;

  // Whether a client that had been logged in tries to come back: never where a person decided that
  // it should go, nor where trying again would end the same way.
  bool AllowsReconnect() const;

  // For a person to read, in a sentence or two. The text in it is as it came from outside.
  QString Explanation() const;
};

}  // namespace corvane::client
