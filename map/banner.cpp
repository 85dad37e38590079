#include "map/banner.h"

#include <chrono>
#include <utility>

#include "framework/text.h"
#include "framework/visible_text.h"

namespace corvane::map {

using client::Ending;
using State = client::Connection::State;

Banner::Banner(client::Connection& connection, QAbstractScrollArea& map)
    : MapNotice(map, Qt::TopEdge, tr("C&onnect...")), myConnection(connection) {
  connect(btnAct, &QPushButton::clicked, this, [this] {
    if (myConnection.CurrentState() == State::Waiting) {
      myConnection.RetryNow();
    } else {
      ConnectRequested();
    }
  });
  mySessionEnded = myConnection.SessionEnded.Connect([this](const Ending& ending) {
    if (!std::exchange(myWasOnline, myConnection.CurrentState() == State::Waiting)) return;
    const bool hasLeft = ending.cause == Ending::Cause::Left;
    myEnding = hasLeft ? QString() : VisibleText(TextFromDisplay(ending.Explanation()));
  });
  myStateChanged = myConnection.StateChanged.Connect([this] { Update(); });
  connect(&myTimer, &QTimer::timeout, this, [this] { Update(); });
  myTimer.start(std::chrono::milliseconds(500));
  Update();
}

void Banner::ShowHint(const QString& hint) {
  myHint = hint;
  Update();
}

void Banner::ShowState(const QString& text, Kind kind, const QString& button) {
  myHint.isEmpty() ? Show(text, kind, button) : Show(myHint, Kind::Calm);
}

void Banner::Update() {
  const client::Members& others = myConnection.Others();
  switch (myConnection.CurrentState()) {
    case State::Online:
      myWasOnline = true;
      myEnding.clear();
      ShowState(
          others.IsCurrent() && others.Count() == 0 ? tr("Nobody else is here yet.") : QString(),
          Kind::Calm);
      break;
    case State::Waiting: {
      const auto seconds = std::chrono::ceil<std::chrono::seconds>(myConnection.RetryIn()).count();
      ShowState(
          tr("The connection is lost; the map shows the last positions. Trying again in %1 s.")
              .arg(seconds),
          Kind::Warning, tr("&Try Now"));
      break;
    }
    case State::Connecting:
    case State::LoggingIn:
      if (!myWasOnline) myEnding.clear();
      ShowState(myWasOnline ? tr("The connection is lost; connecting again...") : QString(),
                Kind::Warning);
      break;
    case State::Offline:
      // Still set if the user gave up reconnecting.
      if (std::exchange(myWasOnline, false)) myEnding.clear();
      if (myEnding.isEmpty()) {
        ShowState(tr("Not connected."), Kind::Calm, tr("C&onnect..."));
      } else {
        ShowState(myEnding, Kind::Warning, tr("C&onnect..."));
      }
      break;
  }
}

}  // namespace corvane::map
