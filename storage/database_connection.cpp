#include "storage/database_connection.h"

#include <limits>
#include <memory>
#include <utility>

#include <QFileInfo>
#include <sqlite3.h>

#include "platform/standard_error.h"
#include "storage/stranger_guard.h"

namespace corvane {

namespace {

constexpr std::chrono::seconds kPatienceWhileOpening(5);
constexpr std::chrono::milliseconds kPatience(250);
constexpr std::chrono::seconds kPauseBetweenSameReports(1);
constexpr std::string_view kSelectAll = "SELECT * FROM ";

int Bind(sqlite3_stmt* statement, int index, const DatabaseValue& value) {
  if (const auto* integer = std::get_if<std::int64_t>(&value)) {
    return sqlite3_bind_int64(statement, index, *integer);
  }
  if (const auto* real = std::get_if<double>(&value)) {
    return sqlite3_bind_double(statement, index, *real);
  }
  if (const auto* text = std::get_if<std::string>(&value)) {
    return sqlite3_bind_text64(statement, index, text->data(), text->size(), SQLITE_STATIC,
                               SQLITE_UTF8);
  }
  return sqlite3_bind_null(statement, index);
}

// The statement borrows the values.
int Bind(sqlite3_stmt* statement, const DatabaseConnection::Values& values) {
  int result = SQLITE_OK;
  for (std::size_t i = 0; i < values.size() && result == SQLITE_OK; ++i)
    result = Bind(statement, static_cast<int>(i + 1), values[i]);
  return result;
}

DatabaseValue ColumnValue(sqlite3_stmt* statement, int column) {
  switch (sqlite3_column_type(statement, column)) {
    case SQLITE_NULL:
      return {};
    case SQLITE_INTEGER:
      return std::int64_t{sqlite3_column_int64(statement, column)};
    case SQLITE_FLOAT:
      return sqlite3_column_double(statement, column);
    default: {
      // Converts to UTF-8 first, which changes the length.
      const void* const bytes = sqlite3_column_type(statement, column) == SQLITE_BLOB
                                    ? sqlite3_column_blob(statement, column)
                                    : sqlite3_column_text(statement, column);
      const auto size = static_cast<std::size_t>(sqlite3_column_bytes(statement, column));
      return bytes == nullptr ? std::string() : std::string(static_cast<const char*>(bytes), size);
    }
  }
}

std::vector<std::string> ColumnNames(sqlite3_stmt* statement, int count) {
  std::vector<std::string> names;
  for (int i = 0; i < count; ++i) {
    const char* const name = sqlite3_column_name(statement, i);
    names.emplace_back(name == nullptr ? "" : name);
  }
  return names;
}

// The word after "SELECT * FROM".
std::string_view TableOf(std::string_view query) {
  query.remove_prefix(kSelectAll.size());
  return query.substr(0, query.find_first_of(" \t\r\n;"));
}

}  // namespace

void DatabaseConnection::StatementEnd::operator()(sqlite3_stmt* statement) const {
  sqlite3_finalize(statement);
}

DatabaseConnection::Statement DatabaseConnection::Prepare(std::string_view text, int& result) {
  result = SQLITE_MISUSE;
  if (myDatabase == nullptr || text.find('\0') != std::string_view::npos) return nullptr;
  result = SQLITE_TOOBIG;
  if (text.size() > std::numeric_limits<int>::max()) return nullptr;
  sqlite3_stmt* statement = nullptr;
  result = sqlite3_prepare_v2(myDatabase, text.data(), static_cast<int>(text.size()), &statement,
                              nullptr);
  if (result == SQLITE_OK && statement == nullptr) result = SQLITE_MISUSE;
  return Statement(statement);
}

DatabaseConnection::~DatabaseConnection() {
  Close();
}

void DatabaseConnection::Close() {
  myKept.clear();
  sqlite3_close(myDatabase);
  myDatabase = nullptr;
}

bool DatabaseConnection::Connect(const QString& file) {
  Close();
  // SQLite does not take every name for a file: an empty one makes a new database.
  if (!QFileInfo(file).isFile()) return ReportFault(SQLITE_CANTOPEN);
  const std::string path = QFileInfo(file).absoluteFilePath().toStdString();
  sqlite3* database = nullptr;
  const int result = sqlite3_open_v2(path.c_str(), &database, SQLITE_OPEN_READWRITE, nullptr);
  myDatabase = database;
  if (result == SQLITE_OK) {
    myPatience.Watch(myDatabase, kPatienceWhileOpening);
    // Turns a write-ahead log back into a rollback journal, unless another program uses the file.
    sqlite3_exec(myDatabase, "PRAGMA journal_mode=DELETE", nullptr, nullptr, nullptr);
    // Memory is bounded for strangers' queries, temporary files are not.
    sqlite3_exec(myDatabase, "PRAGMA temp_store=MEMORY", nullptr, nullptr, nullptr);
    if (SQLExecute("PRAGMA synchronous=EXTRA") &&
        SQLExecute("SELECT count(*) FROM sqlite_master")) {
      myPatience.Watch(myDatabase, kPatience);
      return true;
    }
  } else {
    ReportFault(result);
  }
  Close();
  return false;
}

QString DatabaseConnection::File() const {
  return IsConnected() ? QString::fromUtf8(sqlite3_db_filename(myDatabase, "main")) : QString();
}

bool DatabaseConnection::HasMoved() const {
  int hasMoved = 0;
  sqlite3_file_control(myDatabase, "main", SQLITE_FCNTL_HAS_MOVED, &hasMoved);
  return hasMoved != 0;
}

std::optional<DatabaseCursor> DatabaseConnection::SQLSelect(std::string_view query,
                                                            const Values& values) {
  int result = SQLITE_OK;
  const Statement statement = Prepare(query, result);
  if (statement) result = Bind(statement.get(), values);
  if (result != SQLITE_OK) {
    FailWith(result);
    return std::nullopt;
  }
  // The columns are known after the first step, which may find a table changed by another program.
  result = sqlite3_step(statement.get());
  const int columnCount = sqlite3_column_count(statement.get());
  DatabaseCursor cursor(*this, ColumnNames(statement.get(), columnCount));
  for (; result == SQLITE_ROW; result = sqlite3_step(statement.get())) {
    DatabaseCursor::Row& row = cursor.myRows.emplace_back();
    row.values.reserve(static_cast<std::size_t>(columnCount));
    for (int i = 0; i < columnCount; ++i)
      row.values.push_back(ColumnValue(statement.get(), i));
  }
  if (result != SQLITE_DONE) {
    FailWith(result);
    return std::nullopt;
  }
  Succeed();
  return cursor;
}

bool DatabaseConnection::HasRowWith(std::string_view query, const Values& values) {
  auto kept = myKept.find(query);
  if (kept == myKept.end()) {
    int result = SQLITE_OK;
    Statement prepared = Prepare(query, result);
    if (!prepared) return FailWith(result);
    kept = myKept.emplace(query, std::move(prepared)).first;
  }
  sqlite3_stmt* const statement = kept->second.get();
  const int result = Bind(statement, values);
  const bool hasRow = result == SQLITE_OK ? HasRow(statement) : FailWith(result);
  sqlite3_reset(statement);  // releases the lock
  sqlite3_clear_bindings(statement);
  return hasRow;
}

bool DatabaseConnection::HasRow(sqlite3_stmt* statement) {
  bool hasRow = false;
  int result = SQLITE_OK;
  while ((result = sqlite3_step(statement)) == SQLITE_ROW)
    hasRow = true;
  if (result != SQLITE_DONE) return FailWith(result);
  Succeed();
  return hasRow;
}

bool DatabaseConnection::HasRowForStranger(std::string_view query, std::string_view strangers,
                                           std::chrono::nanoseconds time) {
  const StrangerGuard guard(myDatabase, TableOf(query), strangers, time);
  if (guard.IsRefused()) return FailWith(SQLITE_AUTH);
  int result = SQLITE_OK;
  const Statement statement = Prepare(query, result);
  return statement ? HasRow(statement.get()) : FailWith(result);
}

std::optional<DatabaseCursor> DatabaseConnection::SQLSelectForEdit(std::string_view query,
                                                                   const Values& values) {
  // One read transaction, so both selects see the same rows.
  const bool isOwnTransaction = myDatabase != nullptr && sqlite3_get_autocommit(myDatabase) != 0;
  if (isOwnTransaction) sqlite3_exec(myDatabase, "BEGIN", nullptr, nullptr, nullptr);
  std::optional<DatabaseCursor> cursor = SQLSelect(query, values);
  if (!cursor) ReportFault();
  if (cursor && query.starts_with(kSelectAll)) TakeIdentities(*cursor, query, values);
  if (isOwnTransaction) sqlite3_exec(myDatabase, "COMMIT", nullptr, nullptr, nullptr);
  return cursor;
}

void DatabaseConnection::TakeIdentities(DatabaseCursor& cursor, std::string_view query,
                                        const Values& values) {
  const std::string afterStar(query.substr(std::string_view("SELECT *").size()));
  const auto identified = SQLSelect("SELECT _rowid_,*" + afterStar, values);
  Succeed();
  if (!identified || identified->myRows.size() != cursor.myRows.size()) return;
  for (std::size_t i = 0; i < cursor.myRows.size(); ++i) {
    DatabaseCursor::Row& row = cursor.myRows[i];
    const std::vector<DatabaseValue>& read = identified->myRows[i].values;
    // Anything but a plain select may return other rows with this change.
    const auto* const identity = std::get_if<std::int64_t>(&read.front());
    if (identity == nullptr ||
        !std::equal(read.begin() + 1, read.end(), row.values.begin(), row.values.end()))
      return;
    row.identity = *identity;
  }
  cursor.myTable = TableOf(query);
}

bool DatabaseConnection::InsertRecord(std::string_view table, const DatabaseRecord& record) {
  std::string columns;
  std::string places;
  Values values;
  for (const auto& [column, value] : record.Columns()) {
    columns += (columns.empty() ? "" : ",") + QuotedIdentifier(column);
    places += places.empty() ? "?" : ",?";
    values.push_back(value);
  }
  return SQLExecute(
      "INSERT INTO " + QuotedIdentifier(table) +
          (values.empty() ? " DEFAULT VALUES" : "(" + columns + ") VALUES(" + places + ")"),
      values);
}

std::int64_t DatabaseConnection::LastInserted() const {
  return sqlite3_last_insert_rowid(myDatabase);
}

bool DatabaseConnection::Begin() {
  // Takes the lock here: the transaction waits for it only once.
  return SQLExecute("BEGIN IMMEDIATE");
}

bool DatabaseConnection::Commit() {
  if (!IsInTransaction()) return !myError;
  if (SQLExecute("COMMIT")) return true;
  // The transaction would otherwise stay open and include later changes.
  Rollback();
  return false;
}

bool DatabaseConnection::TakesWrites() {
  if (IsReserved()) return true;  // it is being changed
  // The version is of no use to anybody. Changing it writes the journal, which a full disk or a
  // read-only folder refuses.
  const bool takes = Begin() && SQLExecute("PRAGMA user_version=1");
  Rollback();
  return takes;
}

void DatabaseConnection::Rollback() {
  if (myDatabase == nullptr || IsReserved()) return;
  sqlite3_exec(myDatabase, "ROLLBACK", nullptr, nullptr, nullptr);
}

bool DatabaseConnection::IsInTransaction() const {
  return myDatabase != nullptr && sqlite3_get_autocommit(myDatabase) == 0;
}

bool DatabaseConnection::SQLExecute(std::string_view statement, const Values& values) {
  if (IsReserved()) return Fail(myReservation);
  int result = SQLITE_OK;
  const Statement prepared = Prepare(statement, result);
  if (!prepared) return ReportFault(result);
  result = Bind(prepared.get(), values);
  if (result != SQLITE_OK) return ReportFault(result);
  do {
    result = sqlite3_step(prepared.get());
  } while (result == SQLITE_ROW);
  return result == SQLITE_DONE ? Succeed() : ReportFault(result);
}

bool DatabaseConnection::Fail(std::string message) {
  myError = true;
  myErrorMessage = std::move(message);
  return false;
}

bool DatabaseConnection::FailWith(int result) {
  const bool isFromDatabase = myDatabase != nullptr && sqlite3_errcode(myDatabase) == result;
  return Fail(isFromDatabase ? sqlite3_errmsg(myDatabase) : sqlite3_errstr(result));
}

bool DatabaseConnection::ReportFault(int result) {
  FailWith(result);
  return ReportFault();
}

bool DatabaseConnection::ReportFault(std::string fault) {
  Fail(std::move(fault));
  return ReportFault();
}

bool DatabaseConnection::ReportFault() {
  ++myFaults;
  const Clock::time_point now = Clock::now();
  if (myErrorMessage == myLastReported && now < myNextSameReport) return false;
  myLastReported = myErrorMessage;
  myNextSameReport = now + kPauseBetweenSameReports;
  Report(myErrorMessage);
  return false;
}

void DatabaseConnection::Report(const std::string& fault) const {
  const std::string line = "database: " + fault;
  WriteErrorLine(line);
  if (FaultReported) FaultReported(line);
}

bool DatabaseConnection::Succeed() {
  myError = false;
  myErrorMessage.clear();
  return true;
}

}  // namespace corvane
