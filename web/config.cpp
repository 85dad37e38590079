#include "web/config.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QUrl>

#include "client/password_digest.h"
#include "client/tls.h"
#include "framework/text.h"
#include "map/places/place_file.h"

namespace corvane::web {
namespace {

constexpr qint64 kMaxConfig = qint64{1} << 20;  // bytes
constexpr qint64 kMaxPassword = 4096;
constexpr int kMaxDelay = 3600;  // seconds
constexpr std::uint16_t kServerPort = 12000;
constexpr std::uint16_t kPort = 8080;

class Fault : public std::runtime_error {
 public:
  explicit Fault(const QString& text) : std::runtime_error(text.toStdString()) {}
};

QByteArray ReadFile(const QString& name, qint64 maxBytes) {
  QFile file(name);
  if (!file.open(QIODevice::ReadOnly)) throw Fault(name + ": " + file.errorString());
  QByteArray bytes = file.read(maxBytes + 1);
  if (bytes.size() > maxBytes) throw Fault(name + ": the file is too long");
  return bytes;
}

// An object of the file. Knows which fields were read, and where it is for messages.
class Fields {
 public:
  Fields(QJsonObject object, QString where)
      : myObject(std::move(object)), myWhere(std::move(where)) {}

  QString Path(const QString& name) const {
    return myWhere.isEmpty() ? name : myWhere + '.' + name;
  }

  QJsonValue Take(const QString& name, QJsonValue::Type type, const QJsonValue& otherwise) {
    if (!myObject.contains(name)) return otherwise;
    QJsonValue value = myObject.take(name);
    if (value.type() != type) throw Fault(Path(name) + ": a value of the wrong type");
    return value;
  }
  QString Text(const QString& name, const QString& otherwise = {}) {
    return Take(name, QJsonValue::String, otherwise).toString();
  }
  QString Needed(const QString& name) {
    QString text = Text(name);
    if (text.isEmpty()) throw Fault(Path(name) + ": missing or empty");
    return text;
  }
  bool Flag(const QString& name, bool otherwise) {
    return Take(name, QJsonValue::Bool, otherwise).toBool();
  }
  QJsonArray List(const QString& name) {
    return Take(name, QJsonValue::Array, QJsonArray()).toArray();
  }
  Fields Object(const QString& name) {
    return {Take(name, QJsonValue::Object, QJsonObject()).toObject(), Path(name)};
  }
  void ExpectNoMore() const {
    if (!myObject.isEmpty())
      throw Fault(Path(myObject.keys().first()) + ": there is no such field");
  }

 private:
  QJsonObject myObject;
  QString myWhere;
};

// "HOST:PORT" or "[2001:db8::1]:PORT"; the port may be missing.
std::pair<QString, std::uint16_t> HostAndPort(const QString& text, std::uint16_t otherwise,
                                              const QString& path) {
  const QUrl url("tcp://" + text);
  const bool isAddress = url.isValid() && !url.host().isEmpty() && url.path().isEmpty() &&
                         url.userInfo().isEmpty() && !url.hasQuery() && !url.hasFragment();
  const int port = url.port(otherwise);
  if (!isAddress || port < 1) throw Fault(path + ": expected HOST:PORT");
  return {url.host(), static_cast<std::uint16_t>(port)};
}

Shown ReadShown(Fields& network) {
  Shown shown;
  for (const QJsonValue facet : network.List("facets")) {
    if (!facet.isDouble() || facet.toDouble() != facet.toInt())
      throw Fault(network.Path("facets") + ": expected whole numbers");
    shown.facets.append(facet.toInt());
  }
  Fields show = network.Object("show");
  shown.hitPoints = show.Flag("hitPoints", true);
  shown.state = show.Flag("state", true);
  const QString names = show.Text("names", "full");
  const QStringList known{"full", "initials", "none"};
  if (!known.contains(names)) throw Fault(show.Path("names") + ": expected " + known.join(", "));
  shown.names = static_cast<Shown::Names>(known.indexOf(names));
  show.ExpectNoMore();
  const int delay = network.Take("delaySeconds", QJsonValue::Double, 0).toInt(-1);
  if (delay < 0 || delay > kMaxDelay) {
    throw Fault(network.Path("delaySeconds") + ": expected 0 to " + QString::number(kMaxDelay));
  }
  shown.delay = std::chrono::seconds(delay);
  return shown;
}

WebNetwork ReadNetwork(Fields network, const QDir& folder) {
  WebNetwork read;
  read.id = network.Needed("id");
  static const QRegularExpression kId("\\A[0-9A-Za-z_-]{1,64}\\z");
  if (!kId.match(read.id).hasMatch())
    throw Fault(network.Path("id") + ": expected letters, digits, - and _");
  const QString placeFile = network.Text("place");
  if (!placeFile.isEmpty()) {
    const QString name = folder.absoluteFilePath(placeFile);
    map::PlaceResult result = map::FromPlaceFile(ReadFile(name, map::kMaxPlaceFile));
    if (!result.place) throw Fault(name + ": " + result.error);
    read.place = *std::move(result.place);
  }
  const map::Place& place = read.place;
  const QString host = place.host.contains(':') ? '[' + place.host + ']' : place.host;
  const QString placeServer = host.isEmpty() ? "" : host + ':' + QString::number(place.port);
  const QString server = network.Text("server", placeServer);
  if (server.isEmpty()) throw Fault(network.Path("server") + ": missing or empty");
  std::tie(read.destination.host, read.destination.port) =
      HostAndPort(server, kServerPort, network.Path("server"));
  const QString fingerprint = network.Text("fingerprint");
  const bool isEncrypted =
      network.Flag("tls", !fingerprint.isEmpty() || (server == placeServer && place.isEncrypted));
  QByteArray trusted = server == placeServer ? place.fingerprint : QByteArray();
  if (!fingerprint.isEmpty()) {
    const auto parsed = client::ParseFingerprint(fingerprint);
    if (!parsed) throw Fault(network.Path("fingerprint") + ": expected 64 hexadecimal digits");
    trusted = *parsed;
  }
  if (isEncrypted) read.destination.tls = client::Tls{trusted, {}};
  client::Account& account = read.destination.account;
  account.network = TextFromDisplay(network.Text("network", place.network));
  if (account.network.empty()) throw Fault(network.Path("network") + ": missing or empty");
  account.userName = TextFromDisplay(network.Needed("user"));
  const QString passwordFile = network.Text("passwordFile");
  account.passwordDigest = place.digest.toStdString();
  if (!passwordFile.isEmpty()) {
    QByteArray password = ReadFile(folder.absoluteFilePath(passwordFile), kMaxPassword);
    password.truncate(password.indexOf('\n') < 0 ? password.size() : password.indexOf('\n'));
    if (password.endsWith('\r')) password.chop(1);
    account.passwordDigest = client::PasswordDigest(password.toStdString());
  }
  if (account.passwordDigest.empty())
    throw Fault(network.Path("passwordFile") + ": missing, and the place has no password");
  read.shown = ReadShown(network);
  network.ExpectNoMore();
  return read;
}

Config Read(const QString& file) {
  QJsonParseError error{};
  const QJsonDocument document = QJsonDocument::fromJson(ReadFile(file, kMaxConfig), &error);
  if (!document.isObject()) {
    throw Fault(error.error == QJsonParseError::NoError ? "expected a JSON object"
                                                        : error.errorString());
  }
  const QDir folder = QFileInfo(file).absoluteDir();
  Fields fields(document.object(), {});
  Config config;
  const auto [host, port] = HostAndPort(fields.Text("listen", "127.0.0.1"), kPort, "listen");
  config.port = port;
  if (!config.address.setAddress(host)) throw Fault("listen: expected an address, not a name");
  config.publicUrl = fields.Text("public", "http://" + config.Listening());
  while (config.publicUrl.endsWith('/'))
    config.publicUrl.chop(1);
  const QUrl url(config.publicUrl);
  const bool isWeb = url.scheme() == "http" || url.scheme() == "https";
  if (!url.isValid() || !isWeb || url.host().isEmpty() || url.hasQuery() || url.hasFragment())
    throw Fault("public: expected an address such as https://maps.example.org");
  config.data = folder.absoluteFilePath(
      fields.Text("data", QStandardPaths::writableLocation(QStandardPaths::AppLocalDataLocation)));
  const QJsonArray networks = fields.List("networks");
  if (networks.isEmpty()) throw Fault("networks: expected one at least");
  for (const QJsonValue network : networks) {
    const QString where = QStringLiteral("networks[%1]").arg(config.networks.size());
    if (!network.isObject()) throw Fault(where + ": expected an object");
    config.networks.push_back(ReadNetwork({network.toObject(), where}, folder));
    const QString& id = config.networks.back().id;
    if (std::ranges::count(config.networks, id, &WebNetwork::id) > 1)
      throw Fault(where + ".id: there is another \"" + id + '"');
  }
  fields.ExpectNoMore();
  return config;
}

}  // namespace

QString Config::Listening() const {
  QUrl url;
  url.setHost(address.toString());
  url.setPort(port);
  return url.authority();
}

ConfigResult ReadConfig(const QString& file) {
  try {
    return {Read(file), {}};
  } catch (const Fault& fault) {
    return {std::nullopt, file + ": " + QString::fromUtf8(fault.what())};
  }
}

}  // namespace corvane::web
