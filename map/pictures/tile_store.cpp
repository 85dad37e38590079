#include "map/pictures/tile_store.h"

#include <algorithm>
#include <utility>

#include <QFileInfo>
#include <QImage>
#include <QMetaObject>

namespace corvane::map {
namespace {

constexpr int kReaders = 2;

}  // namespace

TileStore::TileStore(TilePyramid pyramid) : myPyramid(std::move(pyramid)), myTiles(kMaxKib) {
  myReaders.setMaxThreadCount(kReaders);
}

TileStore::~TileStore() {
  ForgetRequests();
  myReaders.waitForDone();
}

const QPixmap* TileStore::Find(const TileId& id) {
  if (const QPixmap* tile = myTiles.object(id)) return tile;
  if (std::ranges::find(myAwaited, id) != myAwaited.end()) return nullptr;
  myAwaited.push_back(id);
  myReaders.start([this, id, file = myPyramid.FileOf(id)] {
    QImage image;
    // Opening a pipe would block until it has a writer.
    if (QFileInfo(file).isFile() && image.load(file))
      image.convertTo(image.hasAlphaChannel() ? QImage::Format_ARGB32_Premultiplied
                                              : QImage::Format_RGB32);
    QMetaObject::invokeMethod(
        &myReceiver, [this, id, image = std::move(image)] { Take(id, image); },
        Qt::QueuedConnection);
  });
  return nullptr;
}

void TileStore::ForgetRequests() {
  myReaders.clear();
  myAwaited.clear();
}

void TileStore::Take(const TileId& id, const QImage& image) {
  std::erase(myAwaited, id);
  const auto kib = std::max<qsizetype>(1, image.sizeInBytes() >> 10);
  myTiles.insert(id, new QPixmap(QPixmap::fromImage(image)), static_cast<int>(kib));
  if (TileLoaded) TileLoaded(id);
}

}  // namespace corvane::map
