#pragma once

#include <cstddef>
#include <string>

#include <QByteArray>

namespace corvane {

// The location of a client's address. Unknown fields are empty.
struct ClientLocation {
  // A session keeps its location for as long as it lasts, so each text is bounded.
  static constexpr std::size_t kMaxTextBytes = 256;

  std::string country;
  std::string state;
  std::string city;
  std::string zip;
  std::string timeZone;
  QByteArray flag;  // a picture file, as received
};

}  // namespace corvane
