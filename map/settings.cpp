#include "map/settings.h"

#include <algorithm>

#include <QFile>

#include "framework/text.h"
#include "map/places/geo_json.h"

namespace corvane::map {
namespace {

constexpr QLatin1String kRecent("recent");
constexpr QLatin1String kPictures("/pictures");
constexpr QLatin1String kLandmarks("/landmarks");
constexpr QLatin1String kCircles("/circles");
constexpr QLatin1String kStored("stored/");

// The beginning of a place's keys. What was stored before there was a server stands at the top.
QString GroupOf(const PlaceKey& place) {
  if (place.host.isEmpty()) return {};
  const QString name =
      QStringLiteral("%1:%2 %3").arg(place.host).arg(place.port).arg(place.network);
  QString key = DisplayText(FoldText(TextFromDisplay(name)));
  // A slash would begin another group.
  key.replace('%', "%25").replace('/', "%2F").replace('\\', "%5C");
  return "/places/" + key;
}

QString PictureGroup(const PlaceKey& place, int facet) {
  return GroupOf(place) + kPictures + '/' + QString::number(facet);
}

bool IsSameEntry(const RecentServer& one, const RecentServer& other) {
  return one.host == other.host && one.port == other.port && one.network == other.network &&
         one.userName == other.userName;
}

}  // namespace

Settings::Settings(const QString& file) : mySettings(file, QSettings::IniFormat) {
  // A digest is as good as the password. The file must exist before its permissions can be set.
  mySettings.setValue(QStringLiteral("format"), 1);
  mySettings.sync();
  QFile::setPermissions(file, QFile::ReadOwner | QFile::WriteOwner);
  // Older versions had the same pictures for all servers: each known one gets them.
  const QList<RecentServer> servers = RecentServers();
  for (const RecentServer& server : servers)
    CopyContent(server.Key());
  if (!servers.isEmpty()) SetCurrentPlace(servers[0].Key());
}

QList<RecentServer> Settings::RecentServers() const {
  QList<RecentServer> servers;
  const int count = std::min(mySettings.beginReadArray(kRecent), kMaxRecent);
  for (int i = 0; i < count; ++i) {
    mySettings.setArrayIndex(i);
    RecentServer server;
    server.host = mySettings.value("host").toString();
    server.port = static_cast<std::uint16_t>(mySettings.value("port").toUInt());
    server.network = mySettings.value("network").toString();
    server.userName = mySettings.value("user").toString();
    server.digest = QByteArray::fromHex(mySettings.value("digest").toByteArray());
    server.isEncrypted = mySettings.value("encrypted").toBool();
    server.fingerprint = QByteArray::fromHex(mySettings.value("fingerprint").toByteArray());
    servers.append(server);
  }
  mySettings.endArray();
  return servers;
}

void Settings::Remember(const RecentServer& server) {
  QList<RecentServer> servers = RecentServers();
  servers.removeIf([&](const RecentServer& other) { return IsSameEntry(server, other); });
  for (RecentServer& other : servers) {
    if (other.host.compare(server.host, Qt::CaseInsensitive) != 0 || other.port != server.port)
      continue;
    other.isEncrypted = server.isEncrypted;
    other.fingerprint = server.fingerprint;
  }
  servers.prepend(server);
  servers.resize(std::min<qsizetype>(servers.size(), kMaxRecent));
  StoreRecent(servers);
}

void Settings::Forget(const RecentServer& server) {
  QList<RecentServer> servers = RecentServers();
  servers.removeIf([&](const RecentServer& other) { return IsSameEntry(server, other); });
  StoreRecent(servers);
}

void Settings::StoreRecent(const QList<RecentServer>& servers) {
  mySettings.remove(kRecent);
  mySettings.beginWriteArray(kRecent, static_cast<int>(servers.size()));
  for (int i = 0; i < servers.size(); ++i) {
    mySettings.setArrayIndex(i);
    mySettings.setValue("host", servers[i].host);
    mySettings.setValue("port", servers[i].port);
    mySettings.setValue("network", servers[i].network);
    mySettings.setValue("user", servers[i].userName);
    if (!servers[i].digest.isEmpty())
      mySettings.setValue("digest", QString::fromLatin1(servers[i].digest.toHex()));
    mySettings.setValue("encrypted", servers[i].isEncrypted);
    if (!servers[i].fingerprint.isEmpty())
      mySettings.setValue("fingerprint", QString::fromLatin1(servers[i].fingerprint.toHex()));
  }
  mySettings.endArray();
}

void Settings::SetCurrentPlace(const PlaceKey& place) {
  if (myPlace.host.isEmpty() && !place.host.isEmpty()) {
    CopyContent(place);
    for (const QLatin1String content : {kPictures, kLandmarks, kCircles})
      mySettings.remove(content);
  }
  const bool isOther = GroupOf(place) != GroupOf(myPlace);
  myPlace = place;
  if (isOther) PlaceChanged();
}

// Copies what was stored without a server. Keeps what the place already has.
void Settings::CopyContent(const PlaceKey& place) {
  for (const QString& key : mySettings.allKeys()) {
    const QString whole = '/' + key;
    if (!whole.startsWith(kPictures + '/') && whole != kLandmarks && whole != kCircles) continue;
    const QString copy = GroupOf(place) + whole;
    if (!mySettings.contains(copy)) mySettings.setValue(copy, mySettings.value(whole));
  }
}

MapPicture Settings::PictureOf(int facet) const {
  MapPicture picture;
  mySettings.beginGroup(PictureGroup(myPlace, facet));
  const QString kind = mySettings.value("kind").toString();
  if (kind == QLatin1String("image")) picture.kind = MapPicture::Kind::Image;
  if (kind == QLatin1String("tiles")) picture.kind = MapPicture::Kind::Tiles;
  picture.path = mySettings.value("path").toString();
  picture.corner = {mySettings.value("left").toDouble(), mySettings.value("top").toDouble()};
  const double scale = mySettings.value("unitsPerPixel").toDouble();
  if (scale > 0) picture.unitsPerPixel = scale;
  mySettings.endGroup();
  return picture;
}

void Settings::SetPictureOf(const PlaceKey& place, int facet, const MapPicture& picture) {
  const QString group = PictureGroup(place, facet);
  mySettings.remove(group);
  if (picture.kind == MapPicture::Kind::None) return;
  mySettings.beginGroup(group);
  mySettings.setValue("kind", picture.kind == MapPicture::Kind::Image ? "image" : "tiles");
  mySettings.setValue("path", picture.path);
  mySettings.setValue("left", picture.corner.x());
  mySettings.setValue("top", picture.corner.y());
  mySettings.setValue("unitsPerPixel", picture.unitsPerPixel);
  mySettings.endGroup();
}

QList<int> Settings::Pictured() const {
  QList<int> facets;
  mySettings.beginGroup(GroupOf(myPlace) + kPictures);
  for (const QString& group : mySettings.childGroups())
    facets.append(group.toInt());
  mySettings.endGroup();
  std::sort(facets.begin(), facets.end());
  return facets;
}

QList<Landmark> Settings::Landmarks() const {
  return FromGeoJson(mySettings.value(GroupOf(myPlace) + kLandmarks).toByteArray()).landmarks;
}

void Settings::SetLandmarks(const QList<Landmark>& landmarks) {
  mySettings.setValue(GroupOf(myPlace) + kLandmarks, ToGeoJson(landmarks));
}

QByteArray Settings::Circles() const {
  return mySettings.value(GroupOf(myPlace) + kCircles).toByteArray();
}

void Settings::SetCircles(const QByteArray& circles) {
  mySettings.setValue(GroupOf(myPlace) + kCircles, circles);
}

QByteArray Settings::Stored(const QString& name) const {
  return mySettings.value(kStored + name).toByteArray();
}

void Settings::Store(const QString& name, const QByteArray& bytes) {
  mySettings.setValue(kStored + name, bytes);
}

}  // namespace corvane::map
