#pragma once

#include <string>

#include <QString>

struct sqlite3;
struct sqlite3_backup;

namespace corvane {

class DatabaseConnection;

// A copy of an open database as it is at one moment, made a few pages at a time while it is used:
// what the connection changes meanwhile is in it, and what another program changes has it begin
// anew. Borrows the connection. The file is there and empty; the copy need not be on the disk yet
// when it is made.
class DatabaseBackup {
 public:
  DatabaseBackup(const DatabaseConnection& source, const QString& file);
  ~DatabaseBackup();
  DatabaseBackup(const DatabaseBackup&) = delete;
  DatabaseBackup& operator=(const DatabaseBackup&) = delete;

  enum class Progress { More, Made, Failed };
  // Copies up to 256 KiB, as pages usually are.
  Progress Step();
  // Why it failed.
  const std::string& ErrorMessage() const { return myErrorMessage; }

 private:
  Progress Fail(int result);
  // Ends it; SQLite's code.
  int Finish();

  sqlite3* myCopy = nullptr;
  sqlite3_backup* myBackup = nullptr;
  int myWaits = 0;
  std::string myErrorMessage;
};

}  // namespace corvane
