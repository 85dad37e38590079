#include "console/networks_model.h"

#include <algorithm>
#include <cstddef>

#include "framework/visible_text.h"

namespace corvane {
namespace {

QString State(const ServerNetworks& network) {
  const QString users =
      QStringLiteral("%1 of %2 users are on").arg(network.CurrentUsers).arg(network.MaxUsers);
  if (!network.Enabled) return QStringLiteral("Disabled, ") + users;
  return network.CurrentUsers < network.MaxUsers ? users : QStringLiteral("Full, ") + users;
}

}  // namespace

void NetworksModel::Add(const NetworkRef& network) {
  const int row = rowCount();
  beginInsertRows({}, row, row);
  myNetworks.push_back(network);
  endInsertRows();
}

void NetworksModel::Remove(const NetworkRef& network) {
  const auto place = std::find(myNetworks.begin(), myNetworks.end(), network);
  if (place == myNetworks.end()) return;
  const int row = static_cast<int>(place - myNetworks.begin());
  beginRemoveRows({}, row, row);
  myNetworks.erase(place);
  endRemoveRows();
}

void NetworksModel::Clear() {
  beginResetModel();
  myNetworks.clear();
  endResetModel();
}

NetworkRef NetworksModel::NetworkAt(int row) const {
  if (row < 0 || row >= rowCount()) return nullptr;
  return myNetworks[static_cast<std::size_t>(row)];
}

int NetworksModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(myNetworks.size());
}

QVariant NetworksModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid()) return {};
  const ServerNetworks& network = *myNetworks[static_cast<std::size_t>(index.row())];
  if (role == Qt::ToolTipRole) return State(network);
  return role == Qt::DisplayRole ? VisibleText(network.NetworkName) : QVariant();
}

QVariant NetworksModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (role != Qt::DisplayRole || orientation != Qt::Horizontal || section != 0) return {};
  return QStringLiteral("Network");
}

}  // namespace corvane
