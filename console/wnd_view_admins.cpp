#include "console/wnd_view_admins.h"

#include <tuple>

#include "app/operator.h"
#include "framework/visible_text.h"

namespace corvane {
namespace {

std::vector<RecordsModel::Record> AdminRecords(Operator& actions) {
  std::vector<RecordsModel::Record> records;
  const auto all = actions.Admins();
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

wndViewAdmins::wndViewAdmins(Operator& actions, QWidget& owner)
    : RecordsDialog(
          QStringLiteral("wndViewAdmins"), QStringLiteral("View Admins"),
          {QStringLiteral("Name"), QStringLiteral("Network"), QStringLiteral("Address")},
          AdminRecords(actions),
          [&actions](const std::vector<std::int64_t>& ids) {
            std::ignore = actions.DeleteAdmins(ids);
          },
          owner),
      lstAdmins(myList) {}

}  // namespace corvane
