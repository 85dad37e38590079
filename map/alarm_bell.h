#pragma once

#include <chrono>
#include <memory>
#include <optional>

#include <QCoreApplication>
#include <QStringList>
#include <QSystemTrayIcon>
#include <QTimer>
#include <QWidget>

#include "client/connection.h"
#include "framework/signal.h"
#include "map/alarms/alarm_watch.h"
#include "map/map_view.h"
#include "map/messages_pane.h"
#include "map/place_picker.h"
#include "map/settings.h"

namespace corvane::map {

// Brings alarms to the user: as a line in the messages, as a mark of the window in the task bar, as
// a desktop notification and as a sound, together and at most once per kPause. Keeps the rules in
// the settings, with the circles of each place, and lets the user change them and draw circles.
// Borrows what it is given.
class AlarmBell {
  Q_DECLARE_TR_FUNCTIONS(corvane::map::AlarmBell)

 public:
  static constexpr std::chrono::seconds kPause{1};
  static constexpr qsizetype kMaxLines = 10;  // of alarms at once; others are counted

  AlarmBell(client::Connection& connection, Settings& settings, MapView& map, PlacePicker& picker,
            MessagesPane& messages, QWidget& owner);

  AlarmWatch& Watch() { return myWatch; }
  // While silenced there are only lines and marks.
  void SetSilenced(bool isSilenced) { myIsSilenced = isSilenced; }
  // Adds the circles to the scene of a facet.
  void ShowOn(MapScene& scene);
  void AskForRules();
  void DrawCircle();

 private:
  void Take(const Alarm& alarm);
  void Ring();
  void Notify(const QStringList& lines);
  void ReadRules();
  void SetRules(const AlarmRules& rules);
  void AskForName(const AlarmCircle& circle);
  QString NextName() const;

  Settings& mySettings;
  MapView& myMap;
  PlacePicker& myPicker;
  MessagesPane& myMessages;
  QWidget& myOwner;
  AlarmWatch myWatch;
  std::unique_ptr<QSystemTrayIcon> myTray;  // while there are notifications
  QStringList myLines;
  qsizetype myMore = 0;  // alarms without a line
  bool myIsSilenced = false;
  QTimer myTick;
  QTimer myPause;
  SignalConnection myPlaceChanged;
};

}  // namespace corvane::map
