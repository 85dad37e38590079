#include "web/site_builder.h"

#include <atomic>

#include <QCryptographicHash>
#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>

#include "map/pictures/picture_cutter.h"

namespace corvane::web {
namespace {

bool IsShown(const WebNetwork& network, int facet) {
  return network.shown.facets.isEmpty() || network.shown.facets.contains(facet);
}

// The folder with the picture's tiles; empty on failure.
QString TilesOf(const map::PlacePicture& picture, const QDir& data,
                const std::function<void(const QString&)>& reported, QString& error) {
  const QByteArray hash = QCryptographicHash::hash(picture.bytes, QCryptographicHash::Sha256);
  QString folder = data.absoluteFilePath("tiles-" + QString::fromLatin1(hash.toHex()));
  if (QFileInfo::exists(folder)) return folder;
  reported("cutting a picture of " + QString::number(picture.bytes.size() >> 10) + " KiB");
  QSaveFile file(folder + '.' + map::ImageSuffix(picture.bytes));
  if (!file.open(QIODevice::WriteOnly) || file.write(picture.bytes) != picture.bytes.size() ||
      !file.commit()) {
    error = file.fileName() + ": " + file.errorString();
    return {};
  }
  const std::atomic<bool> stops = false;
  error = map::CutPicture(file.fileName(), folder, stops, [](int) {});
  QFile::remove(file.fileName());
  return error.isEmpty() ? folder : QString();
}

QJsonArray LandmarksOf(const WebNetwork& network) {
  QJsonArray landmarks;
  for (const map::Landmark& landmark : network.place.landmarks) {
    if (!IsShown(network, landmark.facet)) continue;
    const auto colour = QString::number(landmark.colour & 0xffffff, 16).rightJustified(6, '0');
    landmarks.append(QJsonObject{{"name", landmark.name},
                                 {"colour", '#' + colour},
                                 {"note", landmark.note},
                                 {"facet", landmark.facet},
                                 {"x", landmark.at.x()},
                                 {"y", landmark.at.y()}});
  }
  return landmarks;
}

}  // namespace

std::optional<Site> BuildSite(const WebNetwork& network, const QString& dataFolder,
                              const std::function<void(const QString&)>& reported, QString& error) {
  Site site;
  site.channel = std::make_shared<Channel>();
  QJsonArray pictures;
  for (const map::PlacePicture& picture : network.place.pictures) {
    if (!IsShown(network, picture.facet)) continue;
    const QString folder = TilesOf(picture, QDir(dataFolder), reported, error);
    const auto tiles = folder.isEmpty() ? std::nullopt : map::TilePyramid::Open(folder);
    if (!tiles) {
      if (error.isEmpty()) error = folder + ": there are no tiles";
      error = QStringLiteral("%1: the picture of facet %2 cannot be cut in %3: %4")
                  .arg(network.id, QString::number(picture.facet), dataFolder, error);
      return std::nullopt;
    }
    site.tiles.insert_or_assign(picture.facet, *tiles);
    pictures.append(QJsonObject{{"facet", picture.facet},
                                {"left", picture.corner.x()},
                                {"top", picture.corner.y()},
                                {"unitsPerPixel", picture.unitsPerPixel},
                                {"tileSide", tiles->TileSide()},
                                {"coarsest", tiles->CoarsestLevel()},
                                {"finest", tiles->FinestLevel()},
                                {"width", tiles->Bounds().width()},
                                {"height", tiles->Bounds().height()}});
  }
  QJsonArray facets;
  for (const int facet : network.shown.facets)
    facets.append(facet);
  const QJsonObject description{{"facets", facets},
                                {"pictures", pictures},
                                {"landmarks", LandmarksOf(network)},
                                {"hasFullNames", network.shown.names == Shown::Names::Full}};
  site.description = QJsonDocument(description).toJson(QJsonDocument::Compact).toStdString();
  return site;
}

}  // namespace corvane::web
