#include "storage/database_backup.h"

#include <utility>

#include <sqlite3.h>

#include "storage/database_connection.h"

namespace corvane {

namespace {

constexpr int kPagesPerStep = 64;
constexpr int kMaxWaits = 1000;  // in a row, for another program's lock

}  // namespace

DatabaseBackup::DatabaseBackup(const DatabaseConnection& source, const QString& file)
    : mySource(source) {
  if (sqlite3_open_v2(file.toStdString().c_str(), &myCopy, SQLITE_OPEN_READWRITE, nullptr) ==
      SQLITE_OK) {
    // The caller flushes the copy to the disk.
    sqlite3_exec(myCopy, "PRAGMA synchronous=OFF", nullptr, nullptr, nullptr);
    myBackup = sqlite3_backup_init(myCopy, "main", source.myDatabase, "main");
  }
  if (myBackup == nullptr) myErrorMessage = sqlite3_errmsg(myCopy);
}

DatabaseBackup::~DatabaseBackup() {
  Finish();
}

DatabaseBackup::Progress DatabaseBackup::Step() {
  if (myBackup == nullptr) return Progress::Failed;
  // A copy would have what may still be rolled back.
  if (mySource.IsReserved()) return Progress::More;
  int result = sqlite3_backup_step(myBackup, kPagesPerStep);
  const bool waits = result == SQLITE_BUSY || result == SQLITE_LOCKED;
  myWaits = waits ? myWaits + 1 : 0;
  if (result == SQLITE_OK || (waits && myWaits < kMaxWaits)) return Progress::More;
  if (result == SQLITE_DONE) result = Finish();
  return result == SQLITE_OK ? Progress::Made : Fail(result);
}

DatabaseBackup::Progress DatabaseBackup::Fail(int result) {
  myErrorMessage = sqlite3_errstr(result);
  return Progress::Failed;
}

int DatabaseBackup::Finish() {
  const int result = sqlite3_backup_finish(std::exchange(myBackup, nullptr));
  const int closing = sqlite3_close(std::exchange(myCopy, nullptr));
  return result == SQLITE_OK ? closing : result;
}

}  // namespace corvane
