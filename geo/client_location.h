#pragma once

#include <cstddef>
#include <string>

#include <QImage>

namespace corvane {

// Where a client's address is, as far as it is known. Empty texts and a null picture are unknown.
struct ClientLocation {
  // Of a text, in bytes: a session keeps what it was told as long as it lasts.
  static constexpr std::size_t kLongestText = 256;

  std::string country;
  std::string state;
  std::string city;
  std::string zip;
  std::string timeZone;
  QImage flag;
};

}  // namespace corvane
