#pragma once

#include <functional>
#include <optional>
#include <string>

#include <QObject>
#include <QTimer>

#include "storage/database_backup.h"

namespace corvane {

// Makes a copy of the database, and of the settings beside it as FILE.xml, a step a turn of Qt's
// loop, and has a thread bring both onto the disk: nobody waits for it. Neither file is there until
// it is whole; what is not yet lies beside it under a name that nobody else has. A copy in one read
// (VACUUM INTO) would hold up the server's writes as long as it takes, 230 ms for 50 MB. Borrows
// the connection.
class Backup : public QObject {
 public:
  struct Places {
    QString settings;   // the settings' file
    QString locations;  // the locations' file, as the setting has it; empty where there is none
    QString file;
    bool overwrites = false;
  };

  // Why none may be made there; empty when it may. Only regular files are replaced, and none that
  // the server of this database uses.
  static std::string WhyNot(const DatabaseConnection& source, const Places& places);

  // Calls `done` in the end with what went wrong, empty when all is well.
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
