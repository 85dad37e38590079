#include "console/users_model.h"

#include <algorithm>
#include <utility>

#include "framework/text.h"
#include "framework/visible_text.h"

namespace corvane {

void UsersModel::LogIn(std::string_view userName, std::string_view networkName,
                       std::weak_ptr<ClientSocket> client) {
  if (!myNumbers.try_emplace(FoldText(userName), myNextNumber).second) return;
  const int row = rowCount();
  beginInsertRows({}, row, row);
  myRows.push_back(std::make_unique<Row>(
      Row{myNextNumber++, std::string(userName), std::string(networkName), std::move(client)}));
  endInsertRows();
}

void UsersModel::LogOut(std::string_view userName, std::string_view networkName) {
  const auto entry = myNumbers.find(FoldText(userName));
  if (entry == myNumbers.end()) return;
  const auto found =
      std::lower_bound(myRows.begin(), myRows.end(), entry->second,
                       [](const auto& row, std::uint64_t number) { return row->number < number; });
  if (!SameText((*found)->networkName, networkName)) return;
  const int row = static_cast<int>(found - myRows.begin());
  beginRemoveRows({}, row, row);
  myNumbers.erase(entry);
  myRows.erase(found);
  endRemoveRows();
}

void UsersModel::Clear() {
  beginResetModel();
  myRows.clear();
  myNumbers.clear();
  endResetModel();
}

std::shared_ptr<ClientSocket> UsersModel::ClientAt(int row) const {
  if (row < 0 || row >= rowCount()) return nullptr;
  return myRows[static_cast<std::size_t>(row)]->client.lock();
}

int UsersModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(myRows.size());
}

int UsersModel::columnCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : 2;
}

QVariant UsersModel::data(const QModelIndex& index, int role) const {
  if (role != Qt::DisplayRole || !index.isValid()) return {};
  const Row& row = *myRows[static_cast<std::size_t>(index.row())];
  return VisibleText(index.column() == 0 ? row.userName : row.networkName);
}

QVariant UsersModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (role != Qt::DisplayRole || orientation != Qt::Horizontal) return {};
  return section == 0 ? QStringLiteral("Username") : QStringLiteral("Network");
}

}  // namespace corvane
