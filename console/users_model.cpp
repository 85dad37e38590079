#include "console/users_model.h"

#include <algorithm>
#include <utility>

#include "framework/text.h"
#include "framework/visible_text.h"

namespace corvane {

UsersModel::UsersModel() : myUpdating([this] { Update(); }, CoalescingTimer::First::Now) {}

void UsersModel::Add(std::string_view userName, std::string_view networkName,
                     std::weak_ptr<ClientSocket> client) {
  if (!myNumbers.try_emplace(FoldText(userName), myNextNumber).second) return;
  myRows.push_back(std::make_unique<Row>(
      Row{myNextNumber++, std::string(userName), std::string(networkName), std::move(client)}));
  myUpdating.Note();
}

void UsersModel::Remove(std::string_view userName, std::string_view networkName) {
  const auto entry = myNumbers.find(FoldText(userName));
  if (entry == myNumbers.end()) return;
  const auto found =
      std::lower_bound(myRows.begin(), myRows.end(), entry->second,
                       [](const auto& row, std::uint64_t number) { return row->number < number; });
  if (!SameText((*found)->networkName, networkName)) return;
  myNumbers.erase(entry);
  if (found - myRows.begin() >= myShown) {
    myRows.erase(found);
    return;
  }
  (*found)->hasLeft = true;
  ++myLeft;
  myUpdating.Note();
}

void UsersModel::Clear() {
  beginResetModel();
  myUpdating.Stop();
  myRows.clear();
  myShown = 0;
  myLeft = 0;
  myNumbers.clear();
  endResetModel();
}

void UsersModel::Update() {
  myUpdating.Stop();
  RemoveThoseWhoLeft();
  const int count = static_cast<int>(myRows.size());
  if (count == myShown) return;
  beginInsertRows({}, myShown, count - 1);
  myShown = count;
  endInsertRows();
}

void UsersModel::RemoveThoseWhoLeft() {
  const auto hasLeft = [this](int row) { return myRows[static_cast<std::size_t>(row)]->hasLeft; };
  // From the bottom up, so that fewer pointers move.
  for (int last = myShown - 1; myLeft > 0; --last) {
    if (!hasLeft(last)) continue;
    int first = last;
    while (first > 0 && hasLeft(first - 1))
      --first;
    beginRemoveRows({}, first, last);
    myRows.erase(myRows.begin() + first, myRows.begin() + last + 1);
    const int count = last + 1 - first;
    myShown -= count;
    myLeft -= count;
    endRemoveRows();
    last = first;
  }
}

std::shared_ptr<ClientSocket> UsersModel::ClientAt(int row) const {
  if (row < 0 || row >= rowCount()) return nullptr;
  return myRows[static_cast<std::size_t>(row)]->client.lock();
}

int UsersModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : myShown;
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
