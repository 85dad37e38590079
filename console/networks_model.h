#pragma once

#include <vector>

#include <QAbstractListModel>

#include "server/server_networks.h"

namespace corvane {

// The networks as rows of a list, in the order in which they were added. A row shares ownership of
// its network. Its tool tip shows how many users are logged in, and whether the network is full or
// disabled.
class NetworksModel : public QAbstractListModel {
 public:
  void Add(const NetworkRef& network);
  // Removes the network's row, if there is one.
  void Remove(const NetworkRef& network);
  void Clear();

  // The row's network; null if there is no such row.
  NetworkRef NetworkAt(int row) const;

  int rowCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

 private:
  std::vector<NetworkRef> myNetworks;
};

}  // namespace corvane
