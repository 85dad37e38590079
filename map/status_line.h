#pragma once

#include <optional>

#include <QCoreApplication>
#include <QLabel>
#include <QStatusBar>
#include <QTimer>

#include "client/connection.h"
#include "framework/signal.h"

namespace corvane::map {

// The status bar: the progress of cutting a picture, whether members are recorded and alarms
// silenced, and the connection's state, as one text; the user's controls, and the coordinates under
// the pointer.
class StatusLine : public QStatusBar {
  Q_DECLARE_TR_FUNCTIONS(corvane::map::StatusLine)

 public:
  // Borrows the connection.
  StatusLine(client::Connection& connection, QWidget* parent);

  // Adds a control before the coordinates.
  void AddControl(QWidget* control) { insertPermanentWidget(++myControls, control); }
  void ShowPlace(std::optional<QPointF> place) const;
  void ShowProgress(int percent);
  void ShowRecording(bool isOn);
  void ShowSilenced(bool isOn);

  // The controls. The bar owns them.
  QLabel* lblState;
  QLabel* lblPlace;

 private:
  void Update();
  QString Text();
  QString StateText();

  client::Connection& myConnection;
  int myControls = 0;
  int myPercent = 100;  // of the picture
  bool myIsRecording = false;
  bool myIsSilenced = false;
  QTimer myTimer;
  SignalConnection myStateChanged;
};

}  // namespace corvane::map
