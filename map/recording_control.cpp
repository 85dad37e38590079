#include "map/recording_control.h"

#include <algorithm>
#include <utility>

#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>

#include "framework/text.h"
#include "map/replay_window.h"

namespace corvane::map {
namespace {

constexpr QLatin1String kRecordingOptions("recording");

QString FolderBeside(const QString& settingsFile) {
  const QFileInfo file(settingsFile);
  return file.path() + '/' + file.completeBaseName() + QStringLiteral(" Recordings");
}

}  // namespace

RecordingControl::RecordingControl(client::Connection& connection, Settings& settings,
                                   MessagesPane& messages, QWidget& window,
                                   const QString& settingsFile, QString cacheFolder)
    : myConnection(connection),
      mySettings(settings),
      myMessages(messages),
      myWindow(window),
      mySettingsFile(settingsFile),
      myCacheFolder(std::move(cacheFolder)),
      myFolder(FolderBeside(settingsFile)),
      myRecorder(connection.Others(), myFolder, {}) {
  const QJsonObject stored = QJsonDocument::fromJson(settings.Stored(kRecordingOptions)).object();
  const auto limit = [&](const char* name, int normal, int min, int max) {
    return std::clamp(stored[QLatin1String(name)].toInt(normal), min, max);
  };
  using Limits = RecordingLimits;
  myLimits.days = limit("days", myLimits.days, Limits::kMinDays, Limits::kMaxDays);
  myLimits.mebibytes =
      limit("mebibytes", myLimits.mebibytes, Limits::kMinMebibytes, Limits::kMaxMebibytes);
  myIsOn = stored["on"].toBool();
  myRecorder.SetLimits(myLimits);
  myRecorder.Failed = [this](const QString& reason) {
    myMessages.Add(tr("Recording has stopped: %1").arg(reason));
    if (Failed) Failed();
  };
  myStateChanged = myConnection.StateChanged.Connect([this] { Apply(); });
  RecordingFolder(myFolder).Keep(myLimits);
}

void RecordingControl::SetOn(bool isOn) {
  if (std::exchange(myIsOn, isOn) == isOn) return;
  Store();
  Apply();
}

void RecordingControl::Apply() {
  const bool records = myIsOn && myConnection.CurrentState() == client::Connection::State::Online;
  if (records == myRecorder.IsOn()) return;
  const client::Destination& where = myConnection.CurrentDestination();
  if (records) {
    myRecorder.Start({where.host, where.port, DisplayText(where.account.network)});
  } else {
    myRecorder.Stop();
  }
}

void RecordingControl::Store() {
  const QJsonObject stored{
      {"on", myIsOn}, {"days", myLimits.days}, {"mebibytes", myLimits.mebibytes}};
  mySettings.Store(kRecordingOptions, QJsonDocument(stored).toJson(QJsonDocument::Compact));
}

bool RecordingControl::Owns(const QDialog& dialog) const {
  return myDialog && (&dialog == myDialog || dialog.parentWidget() == myDialog);
}

void RecordingControl::ShowRecordings() {
  if (myDialog) return;
  myDialog = new RecordingsDialog(RecordingFolder(myFolder), myLimits, myWindow);
  myDialog->Played = [this](const Recording& recording) {
    (new ReplayWindow(recording, mySettingsFile, myCacheFolder, myWindow))->show();
  };
  myDialog->DeletingAll = [this] { myRecorder.Discard(); };
  myDialog->LimitsChosen = [this](const RecordingLimits& limits) {
    myLimits = limits;
    myRecorder.SetLimits(limits);
    Store();
    RecordingFolder(myFolder).Keep(limits);
  };
  myDialog->open();
}

}  // namespace corvane::map
