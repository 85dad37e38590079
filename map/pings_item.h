#pragma once

#include <deque>

#include <QGraphicsItem>

#include "client/members.h"
#include "map/places/ping.h"

namespace corvane::map {

// A received ping.
struct PingMark {
  Ping ping;
  client::Clock::time_point since;
};

// Draws a facet's pings, above the members.
class PingsItem : public QGraphicsItem {
 public:
  static constexpr std::chrono::seconds kLifetime{60};

  // Borrows the pings.
  PingsItem(const std::deque<PingMark>& pings, int facet);

  QRectF boundingRect() const override;
  void paint(QPainter* painter, const QStyleOptionGraphicsItem* option, QWidget* widget) override;

 private:
  const std::deque<PingMark>& myPings;
  int myFacet;
};

}  // namespace corvane::map
