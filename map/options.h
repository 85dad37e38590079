#pragma once

#include <optional>

#include <QString>
#include <QStringList>

#include "map/pictures/map_picture.h"
#include "map/settings.h"
#include "platform/caller.h"

namespace corvane::map {

// The command line's options.
struct Options {
  std::optional<RecentServer> server;  // to log in to at the start
  std::optional<MapPicture> picture;   // for facet 0
  QString place;                       // path or link of a place to open; empty without one
};

// Either options, or the answer to the caller (help, version or an error) with which to exit.
struct ParsedOptions {
  std::optional<Options> options;
  CallerAnswer answer;
};

// `arguments` begins with the program's name. The password comes from the environment, because
// other users can read arguments.
ParsedOptions ParseOptions(const QStringList& arguments, const QByteArray& password);

}  // namespace corvane::map
