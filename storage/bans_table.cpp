#include "storage/bans_table.h"

namespace corvane {

bool BansTable::IsBanned(const std::string& address) {
  // An address is digits and dots, so this is what the text with the address in it would give.
  return myConnection.HasRowWith("SELECT * FROM bans WHERE address=?", address);
}

void BansTable::Add(const std::string& address, const std::string& by, const std::string& reason,
                    const std::string& network) {
  DatabaseRecord record;
  record.SetText("address", address);
  record.SetText("by", by);
  record.SetText("reason", reason);
  record.SetDate("bandate", QDateTime::currentDateTime());
  record.SetInteger("banlength", 1);
  record.SetText("network", network);
  myConnection.InsertRecord("bans", record);
  myConnection.Commit();
}

std::optional<std::vector<BansTable::Ban>> BansTable::All() {
  std::optional<DatabaseCursor> rows = myConnection.SQLSelect("SELECT * FROM bans");
  if (!rows) return std::nullopt;
  std::vector<Ban> bans;
  bans.reserve(rows->RecordCount());
  for (; !rows->EndOfRows(); rows->MoveNext()) {
    bans.push_back({rows->Integer("id"), rows->Text("address"), rows->Text("by"),
                    rows->Text("reason"), rows->Date("bandate")});
  }
  return bans;
}

void BansTable::Delete(const std::string& id) {
  myConnection.SQLExecute("DELETE FROM bans WHERE id=" + id);
}

void BansTable::Delete(const std::vector<std::int64_t>& ids) {
  if (ids.empty()) return;
  myConnection.Begin();
  for (const std::int64_t id : ids) {
    if (myConnection.Error()) break;
    Delete(std::to_string(id));
  }
  myConnection.Commit();
}

}  // namespace corvane
