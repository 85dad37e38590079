#include "storage/networks_table.h"

namespace corvane {

namespace {

std::string QueryByName(const std::string& name) {
  return "SELECT * FROM networks WHERE name='" + name + "'";
}

}  // namespace

std::optional<DatabaseCursor> NetworksTable::All() {
  return myConnection.SQLSelect("SELECT * FROM networks");
}

bool NetworksTable::Add(const std::string& name, const std::string& password, std::int32_t maxUsers,
                        bool enabled) {
  DatabaseRecord record;
  record.SetText("name", name);
  record.SetText("pass", password);
  record.SetInteger("users", maxUsers);
  record.SetBoolean("enabled", enabled);
  return myConnection.InsertRecord("networks", record) && myConnection.Commit();
}

bool NetworksTable::Change(const std::string& name, const std::string& password,
                           std::int32_t maxUsers, bool enabled) {
  std::optional<DatabaseCursor> row = myConnection.SQLSelectForEdit(QueryByName(name));
  if (!row || row->EndOfRows()) return row.has_value();
  row->Edit();
  row->SetText("pass", password);
  row->SetInteger("users", maxUsers);
  row->SetBoolean("enabled", enabled);
  return row->Update() && myConnection.Commit();
}

bool NetworksTable::Delete(const std::string& name) {
  std::optional<DatabaseCursor> row = myConnection.SQLSelectForEdit(QueryByName(name));
  if (!row || row->EndOfRows()) return row.has_value();
  return row->DeleteRecord() && myConnection.Commit();
}

}  // namespace corvane
