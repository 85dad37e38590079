#pragma once

#include <optional>

#include <QCoreApplication>
#include <QLabel>
#include <QProgressBar>
#include <QStatusBar>
#include <QTimer>

#include "client/connection.h"
#include "framework/signal.h"

namespace corvane::map {

// The status bar: the connection's state, the progress of cutting a picture, whether members are
// recorded and alarms silenced, the user's controls, and the coordinates under the pointer.
class StatusLine : public QStatusBar {
  Q_DECLARE_TR_FUNCTIONS(corvane::map::StatusLine)

 public:
  // Borrows the connection.
  StatusLine(client::Connection& connection, QWidget* parent);

  // Adds a control before the coordinates.
  void AddControl(QWidget* control) { insertPermanentWidget(++myControls, control); }
  void ShowPlace(std::optional<QPointF> place) const;
  void ShowProgress(int percent) const;

  // The controls. The bar owns them.
  QLabel* lblState;
  QProgressBar* prgCutting;
  QLabel* lblSilenced;  // shown while alarms are silenced
  QLabel* lblRecording;
  QLabel* lblPlace;

 private:
  void Update();
  QString StateText();

  client::Connection& myConnection;
  int myControls = 0;
  QTimer myTimer;
  SignalConnection myStateChanged;
};

}  // namespace corvane::map
