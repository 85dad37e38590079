#pragma once

#include <chrono>
#include <optional>
#include <vector>

#include <QHostAddress>
#include <QList>
#include <QString>

#include "client/connection.h"
#include "map/places/place.h"

namespace corvane::web {

// What a link to a network shows of its members.
struct Shown {
  enum class Names { Full, Initials, None };

  QList<int> facets{};  // empty: all
  bool hitPoints = true;
  bool state = true;
  Names names = Names::Full;
  std::chrono::seconds delay{0};
};

struct WebNetwork {
  QString id;  // letters, digits, "-" and "_"
  client::Destination destination;
  Shown shown;
  map::Place place{};  // with its pictures and landmarks, if the configuration names a file
};

// The settings of corvane-web.
struct Config {
  QHostAddress address{QHostAddress::LocalHost};
  std::uint16_t port = 8080;
  QString publicUrl;  // without a slash at its end
  QString data;       // a folder; absolute
  std::vector<WebNetwork> networks;

  // Address and port, with an IPv6 address in brackets.
  QString Listening() const;
};

// The settings, or a sentence that names the wrong field.
struct ConfigResult {
  std::optional<Config> config;
  QString error{};
};

// Reads a JSON file and the files of passwords and places that it names; relative names begin at
// its folder. Fields that it does not know are refused, since a misspelt one may reveal members.
ConfigResult ReadConfig(const QString& file);

}  // namespace corvane::web
