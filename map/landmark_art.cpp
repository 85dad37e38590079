#include "map/landmark_art.h"

#include <QPainterPath>
#include <QStringList>

#include "map/marker_art.h"
#include "map/places/landmark_icons.h"

namespace corvane::map {
namespace {

QPainterPath PathOf(const LandmarkIcon& icon) {
  QPainterPath path;
  const QStringList words = QString::fromLatin1(icon.path).split(' ');
  qsizetype next = 0;
  const auto point = [&] {
    const double x = words.value(next++).toDouble();
    return QPointF(x, words.value(next++).toDouble());
  };
  while (next < words.size()) {
    const QChar command = words[next++][0];
    if (command == 'Z') {
      path.closeSubpath();
      continue;
    }
    const QPointF first = point();
    if (command == 'M') path.moveTo(first);
    if (command == 'L') path.lineTo(first);
    if (command == 'Q') path.quadTo(first, point());
    if (command != 'C') continue;
    const QPointF second = point();
    path.cubicTo(first, second, point());
  }
  return path;
}

}  // namespace

std::size_t LandmarkArt::NumberOf(const QString& name) {
  for (std::size_t i = 0; i < kLandmarkIcons.size(); ++i) {
    const std::string_view known = kLandmarkIcons[i].name;
    if (name == QLatin1String(known.data(), static_cast<qsizetype>(known.size()))) return i;
  }
  return 0;
}

QRect LandmarkArt::SpaceOf(std::size_t icon, QPointF at) {
  const int up = kLandmarkIcons[icon].isOnFoot ? kSide - 2 : kSide / 2;
  return {at.toPoint() - QPoint(kSide / 2, up), QSize(kSide, kSide)};
}

void LandmarkArt::Draw(QPainter& painter, QPointF at, std::size_t icon, QRgb colour) {
  painter.drawPixmap(SpaceOf(icon, at).topLeft(),
                     Cached(icon, colour, painter.device()->devicePixelRatioF()));
}

const QPixmap& LandmarkArt::Cached(std::size_t icon, QRgb colour, double scale) {
  if (scale != myScale) myPictures.clear();
  myScale = scale;
  const quint64 key = static_cast<quint64>(icon) << 32 | colour;
  if (!myPictures.contains(key)) myPictures.insert(key, new QPixmap(Picture(icon, colour, scale)));
  return *myPictures.object(key);
}

QPixmap LandmarkArt::Picture(std::size_t icon, QRgb colour, double scale) {
  QPixmap picture = NewPicture(QSize(kSide, kSide), scale);
  QPainter painter(&picture);
  painter.setRenderHint(QPainter::Antialiasing);
  constexpr int kEdge = (kSide - LandmarkIcon::kSide) / 2;
  painter.translate(kEdge, kEdge);
  const QPainterPath path = PathOf(kLandmarkIcons[icon]);
  // A white edge around a black one is visible on light and dark pictures.
  painter.setPen(QPen(Qt::white, 3.5, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
  painter.drawPath(path);
  painter.setPen(QPen(Qt::black, 1, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
  painter.setBrush(QColor::fromRgb(colour));
  painter.drawPath(path);
  return picture;
}

}  // namespace corvane::map
