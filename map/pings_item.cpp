#include "map/pings_item.h"

#include <algorithm>
#include <chrono>
#include <cmath>

#include <QPainter>
#include <QWidget>

#include "framework/text.h"
#include "framework/visible_text.h"
#include "map/marker_board.h"

namespace corvane::map {
namespace {

using Seconds = std::chrono::duration<double>;

constexpr QColor kPingColour(0xc2, 0x18, 0x7b);
constexpr double kPingRadius = 12;
// For the first seconds, waves run outwards.
constexpr double kWaves = 6;
constexpr double kWaveLength = 26;
constexpr double kFadeTime = 20;

}  // namespace

PingsItem::PingsItem(const std::deque<PingMark>& pings, int facet)
    : myPings(pings), myFacet(facet) {
  setZValue(2);
}

QRectF PingsItem::boundingRect() const {
  return {-kMaxCoordinate, -kMaxCoordinate, 2 * kMaxCoordinate, 2 * kMaxCoordinate};
}

void PingsItem::paint(QPainter* painter, const QStyleOptionGraphicsItem*, QWidget* widget) {
  if (widget == nullptr) return;
  const QTransform toView = painter->worldTransform();
  painter->save();
  painter->resetTransform();
  painter->setRenderHint(QPainter::Antialiasing);
  painter->setFont(widget->font());
  const auto ring = [painter](QPointF at, double radius) {
    painter->setBrush(Qt::NoBrush);
    painter->setPen(QPen(Qt::white, 5));
    painter->drawEllipse(at, radius, radius);
    painter->setPen(QPen(kPingColour, 3));
    painter->drawEllipse(at, radius, radius);
  };
  const auto now = client::Clock::now();
  for (const PingMark& mark : myPings) {
    if (mark.ping.facet != myFacet) continue;
    const double age = Seconds(now - mark.since).count();
    const double left = Seconds(kLifetime).count() - age;
    const double opacity = std::clamp(left / kFadeTime, 0.0, 1.0);
    const QPointF at = toView.map(QPointF(mark.ping.x, mark.ping.y));
    painter->setOpacity(opacity);
    ring(at, kPingRadius);
    painter->setBrush(kPingColour);
    painter->drawEllipse(at, 3, 3);
    if (age < kWaves) {
      const double wave = age - std::floor(age);
      painter->setOpacity(1 - wave);
      ring(at, kPingRadius + kWaveLength * wave);
      painter->setOpacity(opacity);
    }
    const QString word = VisibleText(TextFromDisplay(mark.ping.word));
    QRect label = widget->fontMetrics().boundingRect(word).adjusted(-4, -1, 4, 1);
    label.moveCenter(at.toPoint() - QPoint(0, static_cast<int>(kPingRadius) + label.height()));
    painter->fillRect(label, kPingColour);
    painter->setPen(Qt::white);
    painter->drawText(label, Qt::AlignCenter | Qt::TextSingleLine, word);
  }
  painter->restore();
}

}  // namespace corvane::map
