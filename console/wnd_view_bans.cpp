#include "console/wnd_view_bans.h"

#include <tuple>

#include "app/operator.h"
#include "framework/dates.h"
#include "framework/visible_text.h"

namespace corvane {
namespace {

std::vector<RecordsModel::Record> BanRecords(Operator& op) {
  std::vector<RecordsModel::Record> records;
  const bool areAll = op.ForEachBan([&records](const Ban& ban) {
    records.push_back({ban.id,
                       {VisibleText(ban.address), VisibleText(ban.by), VisibleText(ban.reason),
                        VisibleText(ShortDateAndTime(ban.bandate))}});
  });
  if (!areAll) records.clear();
  return records;
}

}  // namespace

wndViewBans::wndViewBans(Operator& op, QWidget& owner)
    : RecordsDialog(
          QStringLiteral("wndViewBans"), QStringLiteral("View Bans"),
          {QStringLiteral("Address"), QStringLiteral("By"), QStringLiteral("Reason"),
           QStringLiteral("Date")},
          BanRecords(op),
          [&op](const std::vector<std::int64_t>& ids) { std::ignore = op.LiftBans(ids); }, owner),
      lstBans(myList) {}

}  // namespace corvane
