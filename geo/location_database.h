#pragma once

#include <functional>
#include <memory>
#include <string>

#include <QDateTime>
#include <QObject>
#include <QString>
#include <QTimer>

#include "geo/client_location.h"

namespace corvane {

// Locations from an mmdb file that the operator keeps up to date. Checks the file every five
// seconds and, if it has changed, reads it again on another thread. If a new file is unusable, the
// previous one remains in use. Owns a copy of the file in the temporary folder and looks addresses
// up there, so the file itself may be overwritten, truncated, renamed or deleted at any time.
class LocationDatabase : public QObject {
 public:
  using Log = std::function<void(const std::string&)>;

  // Reads the file before returning. `log` gets lines for the operator: which file is in use, and
  // each fault once.
  LocationDatabase(QString file, QString temporaryFolder, Log log);
  ~LocationDatabase() override;

  // Sets the known fields for the address and leaves the others.
  void Find(const std::string& address, ClientLocation& location);

  // Starts reading the file if it has changed since the last time.
  void CheckFile();

 private:
  // Distinguishes a file from an earlier one of the same name.
  struct State {
    bool isThere = false;
    qint64 size = 0;
    QDateTime modified;

    bool operator==(const State&) const = default;
  };
  struct Copy;
  struct Reading {
    std::shared_ptr<const Copy> copy;
    std::string fault;
  };

  static State StateOf(const QString& file);
  static Reading Read(const QString& file, const QString& temporaryFolder);
  void Take(Reading reading);

  const QString myFile;
  const QString myTemporaryFolder;
  const Log myLog;
  QTimer myCheckTimer;
  State myState;
  bool myIsReading = false;
  std::shared_ptr<const Copy> myCopy;  // null until the file was read
  bool myHasLoggedBadData = false;
};

}  // namespace corvane
