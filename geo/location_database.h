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

// Locations out of an mmdb file that the operator keeps up to date. It looks at the file every five
// seconds and reads it anew when it has changed, in another thread; a file that cannot be used
// leaves what was read before. What is looked up in is a copy in the temporary folder: so the
// file may be written over, cut off, renamed or deleted at any time.
class LocationDatabase : public QObject {
 public:
  using Tell = std::function<void(const std::string&)>;

  // Reads the file at once. `tell` gets a line for the operator: what is in use, and once each
  // what is wrong.
  LocationDatabase(QString file, QString temporaryFolder, Tell tell);
  ~LocationDatabase() override;

  // Sets what is known of the dotted IPv4 address and leaves the rest.
  void Find(const std::string& address, ClientLocation& location);

  // Has the file read if it has changed since it was read last.
  void Look();

 private:
  // What tells a file from the one that was there before.
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
  const Tell myTell;
  QTimer myLooks;
  State myState;
  bool myIsReading = false;
  std::shared_ptr<const Copy> myCopy;  // none until the file could be read
  bool myHasToldOfBadData = false;
};

}  // namespace corvane
