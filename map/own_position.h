#pragma once

#include <chrono>
#include <functional>
#include <optional>

#include <QPointF>
#include <QTimer>

#include "client/connection.h"

namespace corvane::map {

// The user's own position and condition. While switched on, sends each change at once, but at most
// one report per kPause; the last change is always sent. Borrows the connection.
class OwnPosition {
 public:
  static constexpr std::chrono::milliseconds kPause{200};
  static constexpr int kStride = 4;  // map units that an arrow key moves

  explicit OwnPosition(client::Connection& connection);

  // Shown() may have changed.
  std::function<void()> Changed;

  // Initially off.
  void SetOn(bool isOn);
  bool IsOn() const { return myIsOn; }
  // The current report; none while it is off or has no position yet.
  std::optional<client::Report> Shown() const;

  void GoTo(QPointF place, int facet);
  void Step(int columns, int rows, int facet);
  void SetState(int hp, bool inBattle, bool isDead);
  // Call it after a login, since the server does not know the position then.
  void SendAgain();

 private:
  void Update();
  void Send();

  client::Connection& myConnection;
  client::Report myReport;
  bool myIsOn = false;
  bool myIsPlaced = false;
  bool myHasNews = false;
  QTimer myPause;
};

}  // namespace corvane::map
