#include "storage/admins_table.h"

namespace corvane {

bool AdminsTable::IsAdmin(const std::string& name, const std::string& network,
                          const std::string& address, std::chrono::nanoseconds time) {
  if (myValues == StatementValues::Bound) {
    return myConnection.HasRowWith("SELECT * FROM admins WHERE name=? AND network=? AND address=?",
                                   {name, network, address});
  }
  return myConnection.HasRowForStranger("SELECT * FROM admins WHERE name='" + name +
                                            "' AND network='" + network + "' AND address='" +
                                            address + "'",
                                        name, time);
}

bool AdminsTable::Add(const std::string& name, const std::string& address,
                      const std::string& network) {
  const auto [table, record] = Row({0, name, network, address});
  return myConnection.InsertRecord(table, record) && myConnection.Commit();
}

std::pair<std::string, DatabaseRecord> AdminsTable::Row(const Admin& admin) {
  DatabaseRecord record;
  record.SetText("name", admin.name);
  record.SetText("address", admin.address);
  record.SetText("network", admin.network);
  return {"admins", record};
}

std::optional<std::vector<AdminsTable::Admin>> AdminsTable::All() {
  std::optional<DatabaseCursor> rows = myConnection.SQLSelect("SELECT * FROM admins");
  if (!rows) return std::nullopt;
  std::vector<Admin> admins;
  admins.reserve(rows->RecordCount());
  for (; !rows->EndOfRows(); rows->MoveNext()) {
    admins.push_back(
        {rows->Integer("id"), rows->Text("name"), rows->Text("network"), rows->Text("address")});
  }
  return admins;
}

bool AdminsTable::Delete(const std::vector<std::int64_t>& ids) {
  if (ids.empty()) return true;
  const std::string statement = "DELETE FROM admins WHERE id=";
  const auto remove = [&](std::int64_t id) {
    return myValues == StatementValues::Bound
               ? myConnection.SQLExecute(statement + "?", {id})
               : myConnection.SQLExecute(statement + std::to_string(id));
  };
  bool works = myConnection.Begin();
  for (const std::int64_t id : ids)
    works = works && remove(id);
  return myConnection.Commit() && works;
}

}  // namespace corvane
