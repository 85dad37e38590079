#include "map/own_position.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "map/marker_board.h"

namespace corvane::map {
namespace {

std::int32_t Held(double at) {
  return static_cast<std::int32_t>(std::lround(std::clamp(at, -kMaxCoordinate, kMaxCoordinate)));
}

}  // namespace

OwnPosition::OwnPosition(client::Connection& connection) : myConnection(connection) {
  myReport.hp = 100;
  myPause.setSingleShot(true);
  myPause.setInterval(kPause);
  myPause.setTimerType(Qt::PreciseTimer);
  QObject::connect(&myPause, &QTimer::timeout, &myPause, [this] { Send(); });
}

void OwnPosition::SetOn(bool isOn) {
  myIsOn = isOn;
  Update();
}

std::optional<client::Report> OwnPosition::Shown() const {
  if (!myIsOn || !myIsPlaced) return std::nullopt;
  return myReport;
}

void OwnPosition::GoTo(QPointF place, int facet) {
  myReport.x = Held(place.x());
  myReport.y = Held(place.y());
  myReport.facet = facet;
  myIsPlaced = true;
  Update();
}

void OwnPosition::Step(int columns, int rows, int facet) {
  GoTo(QPointF(myReport.x + columns * kStride, myReport.y + rows * kStride), facet);
}

void OwnPosition::SetState(int hp, bool inBattle, bool isDead) {
  myReport.hp = hp;
  myReport.inBattle = inBattle;
  myReport.isDead = isDead;
  Update();
}

void OwnPosition::Update() {
  SendAgain();
  if (Changed) Changed();
}

void OwnPosition::SendAgain() {
  myHasNews = true;
  if (!myPause.isActive()) Send();
}

// The end of the pause sends the changes made meanwhile.
void OwnPosition::Send() {
  if (!myIsOn || !myIsPlaced || !std::exchange(myHasNews, false)) return;
  myConnection.Send(myReport);
  myPause.start();
}

}  // namespace corvane::map
