#include "map/options.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QFileInfo>
#include <QUrl>

#include "client/password_digest.h"
#include "client/tls.h"
#include "map/places/place_link.h"

namespace corvane::map {
namespace {

struct OptionTexts {
  Q_DECLARE_TR_FUNCTIONS(corvane::map::Options)
};

// Reads "LEFT,TOP,SCALE". False if the text has another form.
bool ReadFrame(const QString& text, MapPicture& picture) {
  const QStringList parts = text.split(',');
  bool areNumbers[3] = {};
  if (parts.size() != 3) return false;
  picture.corner = {parts[0].toDouble(&areNumbers[0]), parts[1].toDouble(&areNumbers[1])};
  picture.unitsPerPixel = parts[2].toDouble(&areNumbers[2]);
  return areNumbers[0] && areNumbers[1] && areNumbers[2] && picture.unitsPerPixel > 0;
}

// The path or link that the argument names. Desktops give a file as a path or as a URL.
QString PlaceOf(const QString& argument) {
  if (argument.isEmpty() || IsPlaceLink(argument)) return argument;
  const QUrl url(argument);
  return url.isLocalFile() ? url.toLocalFile() : QFileInfo(argument).absoluteFilePath();
}

}  // namespace

ParsedOptions ParseOptions(const QStringList& arguments, const QByteArray& password) {
  QCommandLineParser parser;
  parser.setApplicationDescription(OptionTexts::tr(
      "Shows the players of a Corvane network on a map.\n"
      "With a server, a network and a user name it logs in at once, with the password in\n"
      "the environment variable CORVANE_MAP_PASSWORD. With a place, it asks before it connects."));
  parser.addPositionalArgument("place", OptionTexts::tr("A place file or a corvane: link to open."),
                               "[FILE|LINK]");
  parser.addOptions({
      {"server", OptionTexts::tr("Log in to this server."), "HOST"},
      {"port", OptionTexts::tr("Its port; 12000 if none is given."), "PORT", "12000"},
      {"tls", OptionTexts::tr("Connect encrypted (TLS).")},
      {"fingerprint",
       OptionTexts::tr("Connect encrypted, and trust only the certificate with this SHA-256 "
                       "fingerprint."),
       "HEX"},
      {"network", OptionTexts::tr("The network."), "NAME"},
      {"user", OptionTexts::tr("The user name."), "NAME"},
      {"map", OptionTexts::tr("Show this picture on facet 0 from now on."), "FILE"},
      {"map-frame",
       OptionTexts::tr("The map coordinates of its left and top edges, and the map units per "
                       "pixel; 0,0,1 if none are given."),
       "X,Y,SCALE", "0,0,1"},
  });
  if (const auto answer = AnswerTo(arguments, parser, 1)) return {{}, *answer};
  Options options;
  const auto fingerprint = client::ParseFingerprint(parser.value("fingerprint"));
  if (parser.isSet("fingerprint") && !fingerprint)
    return {{}, {OptionTexts::tr("--fingerprint takes 64 hexadecimal digits"), 2}};
  options.place = PlaceOf(parser.positionalArguments().value(0));
  if (parser.isSet("server") && !options.place.isEmpty())
    return {{}, {OptionTexts::tr("--server goes without a place"), 2}};
  if (parser.isSet("server")) {
    RecentServer server;
    server.host = parser.value("server");
    server.port = parser.value("port").toUShort();
    server.network = parser.value("network");
    server.userName = parser.value("user");
    server.digest = QByteArray::fromStdString(client::PasswordDigest(password.toStdString()));
    if (server.network.isEmpty() || server.userName.isEmpty())
      return {{}, {OptionTexts::tr("--server needs a --network and a --user"), 2}};
    if (server.port == 0)
      return {{}, {OptionTexts::tr("--port takes a number from 1 to 65535"), 2}};
    server.isEncrypted = parser.isSet("tls") || fingerprint;
    server.fingerprint = fingerprint.value_or(QByteArray());
    options.server = server;
  }
  if (parser.isSet("map")) {
    MapPicture picture;
    picture.kind = MapPicture::Kind::Image;
    // Absolute, because it is remembered and the working folder may differ next time.
    picture.path = QFileInfo(parser.value("map")).absoluteFilePath();
    if (!ReadFrame(parser.value("map-frame"), picture))
      return {{}, {OptionTexts::tr("--map-frame takes X,Y,SCALE"), 2}};
    options.picture = picture;
  }
  return {options, {}};
}

}  // namespace corvane::map
