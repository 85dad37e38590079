#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <QString>

#include "storage/database_cursor.h"
#include "storage/database_record.h"
#include "storage/lock_patience.h"

struct sqlite3;
struct sqlite3_stmt;

namespace corvane {

// A connection to an SQLite database. Owns its prepared statements; its cursors borrow it. Until
// Connect succeeds every operation fails.
//
// Each operation completes on the calling thread. It sets the error flag and message on failure and
// clears them on success. Changes return whether they worked; a failed change is also reported on
// standard error with the prefix "database: ", the same fault at most once a second. Each statement
// is committed durably (rollback journal, synchronous=EXTRA) as it runs, unless Begin has opened a
// transaction. A lock of another process is waited for up to 250 ms, up to 5 s while connecting,
// and more briefly after timeouts (LockPatience).
//
// Limits: only the first statement of a text is run, and a text with a NUL is refused. All rows of
// a query are read into memory at once.
class DatabaseConnection {
 public:
  // Values for the "?" of a statement, in order.
  using Values = std::vector<DatabaseValue>;

  DatabaseConnection() = default;
  ~DatabaseConnection();
  DatabaseConnection(const DatabaseConnection&) = delete;
  DatabaseConnection& operator=(const DatabaseConnection&) = delete;

  // Event: this line was written to standard error. Raised inside the operation that failed.
  std::function<void(const std::string&)> FaultReported;
  // Reports a fault, prefixed with "database: ".
  void Report(const std::string& fault) const;
  // Sets and reports an error of a file beside the database. Returns false.
  bool ReportFault(std::string fault);

  // Opens an existing database file for reading and writing. Reads from it once, so a file that is
  // not a database fails here. A read-only file opens, but changes of it fail. Never creates a
  // file. Returns whether it is open.
  [[nodiscard]] bool Connect(const QString& file);
  bool IsConnected() const { return myDatabase != nullptr; }
  // The absolute path of the open file; empty if none is open.
  QString File() const;
  // Whether the file was replaced or deleted since it was opened. Must be open.
  bool HasMoved() const;

  // Runs one query exactly as given. None if it fails.
  std::optional<DatabaseCursor> SQLSelect(std::string_view query, const Values& values = {});

  // The same for a query that starts with "SELECT * FROM". Also reads each row's identity, so the
  // cursor can change its rows.
  std::optional<DatabaseCursor> SQLSelectForEdit(std::string_view query, const Values& values = {});

  // Whether one query succeeds and yields a row. Steps through all rows, since a later one may
  // fail. The query is kept prepared: for the few whose texts never change.
  bool HasRowWith(std::string_view query, const Values& values);

  // The same for a query that starts with "SELECT * FROM" and contains a stranger's text, which
  // could otherwise block the server or crash it. The query is run exactly as given and not kept.
  // Fails if StrangerGuard refuses it or if it takes more processor time than `time`.
  bool HasRowForStranger(std::string_view query, std::string_view strangers,
                         std::chrono::nanoseconds time);

  // Runs one statement and drops its rows.
  [[nodiscard]] bool SQLExecute(std::string_view statement, const Values& values = {});

  // Adds a row. Columns that the record does not name have the table's default.
  [[nodiscard]] bool InsertRecord(std::string_view table, const DatabaseRecord& record);
  // The identity of the last row added; 0 if there is none. Must be open.
  std::int64_t LastInserted() const;

  // Begin takes the lock and opens a transaction for the statements up to the next Commit. Commit
  // ends it, by a rollback if committing fails. Without an open transaction Commit changes nothing
  // and returns whether the last operation worked.
  [[nodiscard]] bool Begin();
  [[nodiscard]] bool Commit();
  // Undoes an open transaction and keeps the error.
  void Rollback();
  // An error may have ended it by a rollback.
  bool IsInTransaction() const;

  // While the connection is reserved, whose transaction stays open over several turns of the event
  // loop, changes and Commit fail with this text as their error, Rollback does nothing, and reads
  // find what the transaction has changed so far. The owner releases it, by an empty text, while it
  // works.
  void Reserve(std::string_view why) { myReservation = why; }
  bool IsReserved() const { return !myReservation.empty(); }

  // Whether the database could be changed now: begins a change and undoes it.
  [[nodiscard]] bool TakesWrites();

  // Failed changes since the start.
  std::uint64_t Faults() const { return myFaults; }

  // Of the last operation.
  bool Error() const { return myError; }
  const std::string& ErrorMessage() const { return myErrorMessage; }

 private:
  friend class DatabaseBackup;
  friend class DatabaseCursor;
  using Clock = std::chrono::steady_clock;

  struct StatementEnd {
    void operator()(sqlite3_stmt* statement) const;
  };
  using Statement = std::unique_ptr<sqlite3_stmt, StatementEnd>;

  // The first statement of the text; none, with SQLite's code in `result`, if there is no valid
  // one. Also none for a text with a NUL, of which SQLite would run the part before it.
  Statement Prepare(std::string_view text, int& result);
  // Whether running it yields a row.
  bool HasRow(sqlite3_stmt* statement);
  void Close();
  // Reads the identities of the cursor's rows, if the query allows it.
  void TakeIdentities(DatabaseCursor& cursor, std::string_view query, const Values& values);
  // These set or clear the error. They return whether the operation worked.
  bool Fail(std::string message);
  bool FailWith(int result);
  bool Succeed();
  // Report a failed change: SQLite's code, or the error that is set. They return false.
  bool ReportFault(int result);
  bool ReportFault();

  LockPatience myPatience;
  sqlite3* myDatabase = nullptr;
  std::map<std::string, Statement, std::less<>> myKept;  // by their texts
  bool myError = false;
  std::string myErrorMessage;
  std::uint64_t myFaults = 0;
  std::string myReservation;
  std::string myLastReported;
  Clock::time_point myNextSameReport;
};

}  // namespace corvane
