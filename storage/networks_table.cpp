#include "storage/networks_table.h"

namespace corvane {

std::optional<DatabaseCursor> NetworksTable::SelectByName(const std::string& name) {
  const std::string query = "SELECT * FROM networks WHERE name=";
  if (myValues == StatementValues::Bound) return myConnection.SQLSelectForEdit(query + "?", {name});
  return myConnection.SQLSelectForEdit(query + "'" + name + "'");
}

std::optional<DatabaseCursor> NetworksTable::All() {
  return myConnection.SQLSelect("SELECT * FROM networks");
}

bool NetworksTable::Add(const std::string& name, const std::string& password, std::int32_t maxUsers,
                        bool enabled) {
  const auto [table, record] = Row(name, password, maxUsers, enabled);
  return myConnection.InsertRecord(table, record) && myConnection.Commit();
}

std::pair<std::string, DatabaseRecord> NetworksTable::Row(const std::string& name,
                                                          const std::string& password,
                                                          std::int32_t maxUsers, bool enabled) {
  DatabaseRecord record;
  record.SetText("name", name);
  record.SetText("pass", password);
  record.SetInteger("users", maxUsers);
  record.SetBoolean("enabled", enabled);
  return {"networks", record};
}

bool NetworksTable::Change(const std::string& name, const std::string& password,
                           std::int32_t maxUsers, bool enabled) {
  std::optional<DatabaseCursor> row = SelectByName(name);
  if (!row || row->EndOfRows()) return row.has_value();
  DatabaseRecord changes;
  changes.SetText("pass", password);
  changes.SetInteger("users", maxUsers);
  changes.SetBoolean("enabled", enabled);
  return row->Update(changes) && myConnection.Commit();
}

bool NetworksTable::Delete(const std::string& name) {
  std::optional<DatabaseCursor> row = SelectByName(name);
  if (!row || row->EndOfRows()) return row.has_value();
  return row->DeleteRecord() && myConnection.Commit();
}

}  // namespace corvane
