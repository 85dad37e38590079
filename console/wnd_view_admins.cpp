#include "console/wnd_view_admins.h"

#include <tuple>

#include "app/operator.h"
#include "framework/visible_text.h"

namespace corvane {
namespace {

std::vector<RecordsModel::Record> AdminRecords(Operator& op) {
  std::vector<RecordsModel::Record> records;
  const auto all = op.Admins();
  if (!all) return records;
  records.reserve(all->size());
  for (const AdminsTable::Admin& admin : *all) {
    records.push_back(
        {admin.id,
         {VisibleText(admin.name), VisibleText(admin.network), VisibleText(admin.address)}});
  }
  return records;
}

}  // namespace

wndViewAdmins::wndViewAdmins(Operator& op, QWidget& owner)
    : RecordsDialog(
          QStringLiteral("wndViewAdmins"), QStringLiteral("View Admins"),
          {QStringLiteral("Name"), QStringLiteral("Network"), QStringLiteral("Address")},
          AdminRecords(op),
          [&op](const std::vector<std::int64_t>& ids) { std::ignore = op.DeleteAdmins(ids); },
          owner),
      lstAdmins(myList) {}

}  // namespace corvane
