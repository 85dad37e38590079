#pragma once

#include <string>

#include <QImage>

namespace corvane {

// Where a client's address is, as far as it is known. Empty texts and a null picture are unknown.
struct ClientLocation {
  std::string country;
  std::string state;
  std::string city;
  std::string zip;
  std::string timeZone;
  QImage flag;
};

}  // namespace corvane
