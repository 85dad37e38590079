#pragma once

#include <functional>

#include <QCoreApplication>
#include <QPointer>
#include <QString>
#include <QWidget>

#include "client/connection.h"
#include "framework/signal.h"
#include "map/messages_pane.h"
#include "map/recording/recorder.h"
#include "map/recordings_dialog.h"
#include "map/settings.h"

namespace corvane::map {

// Records the network while it is switched on and the connection is online, keeps this and the
// limits in the settings, and opens the dialog and the replays. Recordings are in a folder beside
// the settings file, named after it.
class RecordingControl {
  Q_DECLARE_TR_FUNCTIONS(corvane::map::RecordingControl)

 public:
  // Borrows the first four. `window` owns the dialog and the replays.
  RecordingControl(client::Connection& connection, Settings& settings, MessagesPane& messages,
                   QWidget& window, const QString& settingsFile, QString cacheFolder);

  // Recording has been switched off because of an error; a message says which.
  std::function<void()> Failed;

  bool IsOn() const { return myIsOn; }
  void SetOn(bool isOn);
  void ShowRecordings();
  // Whether the dialog is the recordings', or was opened from it.
  bool Owns(const QDialog& dialog) const;

 private:
  void Apply();
  void Store();

  client::Connection& myConnection;
  Settings& mySettings;
  MessagesPane& myMessages;
  QWidget& myWindow;
  QString mySettingsFile;
  QString myCacheFolder;
  QString myFolder;
  RecordingLimits myLimits;
  bool myIsOn = false;
  Recorder myRecorder;
  QPointer<RecordingsDialog> myDialog;
  SignalConnection myStateChanged;
};

}  // namespace corvane::map
