#pragma once

#include <functional>
#include <optional>
#include <string>

#include <QObject>
#include <QTimer>

#include "storage/database_backup.h"

namespace corvane {

// Copies the database to a file, and the settings to FILE.xml beside it. Copies in small steps, one
// per turn of Qt's loop, and syncs to disk on a thread, so the server never waits: a copy in one
// read (VACUUM INTO) would block its writes throughout, 230 ms for 50 MB. Each file appears under
// its name only when it is complete; until then it has a temporary name beside it. If the object is
// destroyed early, no file is left. Borrows the connection.
class Backup : public QObject {
 public:
  struct Places {
    QString settings;   // the settings file
    QString locations;  // the value of the setting "LocationDatabase"; may be empty
    QString file;
    bool overwrites = false;
  };

  // Why a backup into these places is refused; empty if it is allowed. It may replace only regular
  // files, and none that the server of this database uses.
  static std::string WhyNot(const DatabaseConnection& source, const Places& places);

  // Calls `done` at the end, from Qt's loop; the error is empty on success.
  Backup(const DatabaseConnection& source, Places places,
         std::function<void(const std::string& error)> done);
  ~Backup() override;

 private:
  void Step();
  void Store();

  const Places myPlaces;
  const std::function<void(const std::string&)> myDone;
  std::string myError;
  QString myUnfinished;
  std::optional<DatabaseBackup> myCopy;
  QTimer mySteps;
};

}  // namespace corvane
