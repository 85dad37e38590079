#pragma once

#include <cstddef>
#include <string>

#include <QByteArray>

namespace corvane {

// Where a client's address is, as far as it is known. What is empty is unknown.
struct ClientLocation {
  // Of a text, in bytes: a session keeps what it was told as long as it lasts.
  static constexpr std::size_t kLongestText = 256;

  std::string country;
  std::string state;
  std::string city;
  std::string zip;
  std::string timeZone;
  QByteArray flag;  // a picture, as the service sent it
};

}  // namespace corvane
