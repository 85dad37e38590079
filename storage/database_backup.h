#pragma once

#include <string>

#include <QString>

struct sqlite3;
struct sqlite3_backup;

namespace corvane {

class DatabaseConnection;

// Copies an open database a few pages at a time while it is in use. The copy includes what the
// connection changes meanwhile; a change by another program restarts it, and it waits while the
// connection is reserved. Borrows the connection. The file must exist and be empty; a finished copy
// is not yet flushed to the disk.
class DatabaseBackup {
 public:
  DatabaseBackup(const DatabaseConnection& source, const QString& file);
  ~DatabaseBackup();
  DatabaseBackup(const DatabaseBackup&) = delete;
  DatabaseBackup& operator=(const DatabaseBackup&) = delete;

  enum class Progress { More, Made, Failed };
  // Copies the next 64 pages, usually 256 KiB.
  Progress Step();
  // Why the backup failed.
  const std::string& ErrorMessage() const { return myErrorMessage; }

 private:
  Progress Fail(int result);
  // Ends the backup. Returns SQLite's code.
  int Finish();

  const DatabaseConnection& mySource;
  sqlite3* myCopy = nullptr;
  sqlite3_backup* myBackup = nullptr;
  int myWaits = 0;
  std::string myErrorMessage;
};

}  // namespace corvane
