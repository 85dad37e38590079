#include "storage/bans_table.h"

#include <utility>

namespace corvane {

bool BansTable::IsBanned(const std::string& address) {
  // An address is digits and dots, so this is what the text with the address in it would give.
  return myConnection.HasRowWith("SELECT * FROM bans WHERE address=?", {address});
}

bool BansTable::Add(const Ban& ban) {
  DatabaseRecord record;
  record.SetText("address", ban.address);
  record.SetText("by", ban.by);
  record.SetText("reason", ban.reason);
  record.SetDate("bandate", ban.bandate);
  record.SetInteger("banlength", 1);
  record.SetText("network", ban.network);
  return myConnection.InsertRecord("bans", record) && myConnection.Commit();
}

std::optional<std::vector<BansTable::Ban>> BansTable::All(const std::function<void()>& afterEach) {
  std::vector<Ban> all;
  for (;;) {
    auto portion = Portion(all.empty() ? kBegin : all.back().id);
    if (!portion) return std::nullopt;
    for (Ban& ban : *portion) {
      all.push_back(std::move(ban));
      afterEach();
    }
    if (portion->size() < kPortion) return all;
  }
}

std::optional<std::vector<BansTable::Ban>> BansTable::Portion(std::int64_t behind) {
  return Select(" WHERE id>? ORDER BY id LIMIT " + std::to_string(kPortion), {behind});
}

std::optional<BansTable::Ban> BansTable::Find(const std::string& id) {
  auto found = Select(" WHERE id=?", {id});
  if (!found || found->empty()) return std::nullopt;
  return std::move(found->front());
}

std::optional<std::vector<BansTable::Ban>> BansTable::Select(
    const std::string& condition, const DatabaseConnection::Values& values) {
  std::optional<DatabaseCursor> rows =
      myConnection.SQLSelect("SELECT * FROM bans" + condition, values);
  if (!rows) return std::nullopt;
  std::vector<Ban> bans;
  bans.reserve(rows->RecordCount());
  for (; !rows->EndOfRows(); rows->MoveNext()) {
    bans.push_back({rows->Integer("id"), rows->Text("address"), rows->Text("by"),
                    rows->Text("reason"), rows->Date("bandate"), rows->Text("network")});
  }
  return bans;
}

bool BansTable::Delete(const std::string& id) {
  if (myValues == StatementValues::Bound) {
    return myConnection.SQLExecute("DELETE FROM bans WHERE id=?", {id});
  }
  return myConnection.SQLExecute("DELETE FROM bans WHERE id=" + id);
}

bool BansTable::Delete(const std::vector<std::int64_t>& ids) {
  if (ids.empty()) return true;
  bool works = myConnection.Begin();
  for (const std::int64_t id : ids)
    works = works && Delete(std::to_string(id));
  return myConnection.Commit() && works;
}

}  // namespace corvane
