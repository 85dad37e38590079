#pragma once

#include <chrono>
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

// One SQLite database. Owns the connection and the statements that it keeps prepared; its cursors
// borrow it. Until Connect has worked every operation fails.
//
// Each operation runs to its end on the calling thread: it sets the error flag and message when it
// fails and clears them when it succeeds. What changes data returns whether it worked, and a failed
// change is told: standard error says "database: " and why, the same at most once a second. Each
// statement is committed durably (rollback journal, synchronous=EXTRA) as it runs, unless Begin
// opened a group. A lock held by another process is waited for up to 250 ms, up to 5 s while
// connecting, and more briefly after waits in vain (LockPatience).
//
// Limits: of a text with several statements the first is run, and a text with a byte of 0 is
// refused. All rows of a query are read into memory at once.
class DatabaseConnection {
 public:
  // For the "?" of a statement, in their order.
  using Values = std::vector<DatabaseValue>;

  DatabaseConnection() = default;
  ~DatabaseConnection();
  DatabaseConnection(const DatabaseConnection&) = delete;
  DatabaseConnection& operator=(const DatabaseConnection&) = delete;

  // Event: this line was told on standard error. Raised inside the operation that failed.
  std::function<void(const std::string&)> Complained;
  // Tells a fault, behind "database: ".
  void Tell(const std::string& fault) const;
  // Sets the error and tells it, for what is kept beside the database. Returns false.
  bool Complain(std::string fault);

  // Opens an existing database file for reading and writing and reads from it once, so that a file
  // that is no database fails here. A file that may only be read opens as well, and each change of
  // it fails. Never creates a file. Returns whether it is open.
  [[nodiscard]] bool Connect(const QString& file);
  bool IsConnected() const { return myDatabase != nullptr; }
  // The absolute path of the file that is open; empty where none is.
  QString File() const;
  // Whether its name leads elsewhere by now: the file was replaced or deleted. Must be open.
  bool HasMoved() const;

  // Runs one query exactly as given. None when it fails.
  std::optional<DatabaseCursor> SQLSelect(std::string_view query, const Values& values = {});

  // The same for a query that starts with "SELECT * FROM", with each row's identity taken along on
  // the side, so that the cursor can change its rows.
  std::optional<DatabaseCursor> SQLSelectForEdit(std::string_view query, const Values& values = {});

  // Whether one query succeeds and yields a row. All its rows are stepped through, so that an error
  // in a later one counts. The query is kept prepared: for the few whose texts never change.
  bool HasRowWith(std::string_view query, const Values& values);

  // The same for a query that starts with "SELECT * FROM" and holds a text from outsiders, which
  // could otherwise hold up the server or end it. Run exactly as given and not kept. Fails if
  // OutsiderGuard refuses it or if it takes more processor time than `time`.
  bool HasRowForOutsider(std::string_view query, std::string_view outsiders,
                         std::chrono::nanoseconds time);

  // Runs one statement and drops its rows.
  [[nodiscard]] bool SQLExecute(std::string_view statement, const Values& values = {});

  // Adds a row. Columns that the record does not name have the table's default.
  [[nodiscard]] bool InsertRecord(std::string_view table, const DatabaseRecord& record);
  // The identity of the row that was added last; 0 before. Must be open.
  std::int64_t LastInserted() const;

  // Begin takes the lock and groups the statements up to the next Commit into one transaction.
  // Commit ends such a group, and takes it back where it cannot be committed. Without a group
  // everything is committed already, neither the data nor the error flag changes, and the result is
  // the last operation's.
  [[nodiscard]] bool Begin();
  [[nodiscard]] bool Commit();

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

  // The first statement of the text. None, with SQLite's code in `result`, when there is none: also
  // for a text with a NUL, which SQLite would take for its end and run what stands before it.
  Statement Prepare(std::string_view text, int& result);
  // Whether running it yields a row.
  bool HasRow(sqlite3_stmt* statement);
  void Close();
  // Gives the cursor its rows' identities where the query allows it.
  void TakeIdentities(DatabaseCursor& cursor, std::string_view query, const Values& values);
  // Set or clear the error; they return what the operation that ends there returns.
  bool Fail(std::string message);
  bool FailWith(int result);
  bool Succeed();
  // The failure of something that was to change data: sets the error, or takes the one that is set,
  // and tells it. Returns false.
  bool Complain(int result);
  bool Complain();

  LockPatience myPatience;
  sqlite3* myDatabase = nullptr;
  std::map<std::string, Statement, std::less<>> myKept;  // by their texts
  bool myError = false;
  std::string myErrorMessage;
  std::string myLastComplaint;
  Clock::time_point myNextSameComplaint;
};

}  // namespace corvane
