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
// it is whole. Borrows the connection.
class Backup : public QObject {
 public:
  // `settings` is the settings' file. Calls `done` in the end with what went wrong, empty when all
  // is well.
  Backup(const DatabaseConnection& source, QString settings, QString file,
         std::function<void(const std::string& error)> done);
  ~Backup() override;

 private:
  void Step();
  void Store();

  const QString mySettings;
  const QString myFile;
  const std::function<void(const std::string&)> myDone;
  std::optional<DatabaseBackup> myCopy;
  QTimer mySteps;
};

}  // namespace corvane
