#pragma once

#include <functional>

#include <QLocalServer>
#include <QLockFile>
#include <QString>
#include <QTimer>

namespace corvane::map {

// The map of a data folder that takes over what further starts are to open: the first one, and
// after its end one of the others. It listens on a local socket that only its user can reach, for
// one text from each client, and confirms it. Serves at most kMaxClients at a time, each for at
// most kMaxTime.
class RunningMap {
 public:
  static constexpr int kMaxClients = 8;
  static constexpr int kMaxBytes = 64 << 10;
  static constexpr int kMaxTime = 2000;  // ms

  explicit RunningMap(const QString& dataFolder);

  // The path or link of another start.
  std::function<void(const QString& place)> PlaceReceived;

  // Hands the path or link to the folder's running map. False if there is none, or it does not
  // confirm within kMaxTime.
  static bool HandOver(const QString& dataFolder, const QString& place);

 private:
  void Take();
  void Accept();
  void Read(QLocalSocket& client) const;

  QLockFile myLock;
  QString myName;
  QTimer myRetry;
  QLocalServer myServer;  // last: its clients use the others
};

}  // namespace corvane::map
