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

void NetworksTable::Add(const std::string& name, const std::string& password, std::int32_t maxUsers,
                        bool enabled) {
  DatabaseRecord record;
  record.SetText("name", name);
  record.SetText("pass", password);
  record.SetInteger("users", maxUsers);
  record.SetBoolean("enabled", enabled);
  myConnection.InsertRecord("networks", record);
  myConnection.Commit();
}

void NetworksTable::Change(const std::string& name, const std::string& password,
                           std::int32_t maxUsers, bool enabled) {
  std::optional<DatabaseCursor> row = myConnection.SQLSelectForEdit(QueryByName(name));
  if (!row || row->EndOfRows()) return;
  row->Edit();
  row->SetText("pass", password);
  row->SetInteger("users", maxUsers);
  row->SetBoolean("enabled", enabled);
  row->Update();
  myConnection.Commit();
}

void NetworksTable::Delete(const std::string& name) {
  std::optional<DatabaseCursor> row = myConnection.SQLSelectForEdit(QueryByName(name));
  if (!row || row->EndOfRows()) return;
  row->DeleteRecord();
  myConnection.Commit();
}

}  // namespace corvane
