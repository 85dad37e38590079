#pragma once

#include <chrono>
#include <functional>
#include <optional>

#include <QPointF>
#include <QTimer>

#include "client/connection.h"

namespace corvane::map {

// The user's own place and state, sent while the user wants it: at once when it changes, and at
// most five times a second.
class OwnPosition {
 public:
  static constexpr std::chrono::milliseconds kPause{200};
  static constexpr int kStride = 4;  // map units that an arrow key moves

  explicit OwnPosition(client::Connection& connection);

  // What is to be drawn has changed.
  std::function<void()> Changed;

  // Off at first.
  void SetOn(bool isOn);
  bool IsOn() const { return myIsOn; }
  // The report as it stands; none while nothing is sent.
  std::optional<client::Report> Shown() const;

  void GoTo(QPointF place, int facet);
  void Step(int columns, int rows, int facet);
  void SetState(int hp, bool inBattle, bool isDead);
  // The connection is there again, and knows nothing of it.
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
