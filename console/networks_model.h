#pragma once

#include <vector>

#include <QAbstractListModel>

#include "server/server_networks.h"

namespace corvane {

// The configured networks as rows of a list, in the order in which they were added. A row holds
// its network's registry entry; its tool tip says how many users are on, and what keeps others out.
class NetworksModel : public QAbstractListModel {
 public:
  void Add(const NetworkRef& network);
  // Takes the network's row out, if there is one.
  void Remove(const NetworkRef& network);
  void Clear();

  // The row's network; none for a row that does not exist.
  NetworkRef NetworkAt(int row) const;

  int rowCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

 private:
  std::vector<NetworkRef> myNetworks;
};

}  // namespace corvane
