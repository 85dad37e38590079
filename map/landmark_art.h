#pragma once

#include <QCache>
#include <QPainter>
#include <QPixmap>
#include <QString>

namespace corvane::map {

// Draws the icons of landmarks, at one size at all scales. Caches their pixmaps.
class LandmarkArt {
 public:
  static constexpr int kSide = 24;  // of the space for an icon with its white edge, in pixels

  // The number of an icon in kLandmarkIcons; 0 if the name is unknown.
  static std::size_t NumberOf(const QString& name);
  // The place of a landmark's icon in the window.
  static QRect SpaceOf(std::size_t icon, QPointF at);

  void Draw(QPainter& painter, QPointF at, std::size_t icon, QRgb colour);

  // `scale` is in device pixels per pixel.
  const QPixmap& Cached(std::size_t icon, QRgb colour, double scale);
  static QPixmap Picture(std::size_t icon, QRgb colour, double scale);

 private:
  // Files may hold any number of colours.
  static constexpr int kMaxCached = 500;

  QCache<quint64, QPixmap> myPictures{kMaxCached};
  double myScale = 0;
};

}  // namespace corvane::map
