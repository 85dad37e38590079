#pragma once

#include <optional>

#include <QString>
#include <QStringList>

#include "map/pictures/map_picture.h"
#include "map/settings.h"
#include "platform/caller.h"

namespace corvane::map {

// What the command line asks for.
struct Options {
  std::optional<RecentServer> server;  // log in there at once
  std::optional<MapPicture> picture;   // of facet 0
};

// What reading the command line came to: options, or an answer to the caller.
struct ParsedOptions {
  std::optional<Options> options;
  CallerAnswer answer;
};

// `arguments` begins with the program's name. The password is never among them, since others can
// read them; it comes from the environment.
ParsedOptions ParseOptions(const QStringList& arguments, const QByteArray& password);

}  // namespace corvane::map
