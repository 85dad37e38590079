#pragma once

#include <optional>

#include <QString>
#include <QStringList>

#include "viewer/map_picture.h"
#include "viewer/settings.h"

namespace corvane::viewer {

// What the command line asks for.
struct Options {
  std::optional<RecentServer> server;  // log in there at once
  std::optional<MapPicture> picture;   // of facet 0
};

// What reading the command line came to: options, or a text to show instead (help, or what is
// wrong) and the exit code that goes with it.
struct ParsedOptions {
  std::optional<Options> options;
  QString text;
  int exitCode = 0;
};

// `arguments` begins with the program's name. The password is never among them, since others can
// read them; it comes from the environment.
ParsedOptions ParseOptions(const QStringList& arguments, const QByteArray& password);

}  // namespace corvane::viewer
