#pragma once

#include <deque>

#include <QCoreApplication>
#include <QPointer>
#include <QTimer>

#include "client/connection.h"
#include "map/map_scene.h"
#include "map/pings_item.h"
#include "map/settings.h"

namespace corvane::map {

// Sends pings and shows received ones for PingsItem::kLifetime, on any facet.
class Pings {
  Q_DECLARE_TR_FUNCTIONS(corvane::map::Pings)

 public:
  static constexpr std::size_t kMaxShown = 20;

  // Borrows all three. `window` owns the dialogs.
  Pings(client::Connection& connection, Settings& settings, QWidget& window);

  // Shows the facet's pings in its scene, until the next call or the scene's end.
  void ShowIn(MapScene& scene);

  // Call it with each message of the network. Most are no pings.
  void Receive(const QString& message);
  // Removes all: another network's map is shown.
  void Clear() { myPings.clear(); }
  // Asks for the word, and whether to send it.
  void Ask(QPointF place, int facet);

  // Removes the pings that are over at that time. A timer calls it too.
  void Advance(client::Clock::time_point now);
  const std::deque<PingMark>& All() const { return myPings; }

 private:
  client::Connection& myConnection;
  Settings& mySettings;
  QWidget& myWindow;
  std::deque<PingMark> myPings;  // the oldest first
  PingsItem* myItem = nullptr;   // the scene owns it
  QTimer myTimer;
};

}  // namespace corvane::map
