#pragma once

#include <cstdint>
#include <string>

#include <QDateTime>

namespace corvane {

// A ban as it is stored and listed.
struct Ban {
  std::int64_t id = 0;
  std::string address;
  std::string by;
  std::string reason;
  QDateTime bandate;
  std::string network;   // of the user who was banned
  QDateTime until = {};  // invalid if it never ends

  bool HasEnded(const QDateTime& time) const { return until.isValid() && until <= time; }
};

}  // namespace corvane
