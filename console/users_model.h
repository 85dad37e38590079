#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include <QAbstractTableModel>

#include "framework/coalescing_timer.h"

namespace corvane {

class ClientSocket;

// The logged-in users as rows of a list: user name, network name and session, held weakly. User
// names are unique, so an index by name finds the row. Shows the first change at once and coalesces
// those of the next 20 ms: thousands of changes cost the view few layouts, and a user who logs in
// and out within that time none.
class UsersModel : public QAbstractTableModel {
 public:
  UsersModel();

  // Add does nothing if a row of any network has the user name; Remove does nothing unless both
  // names match. This asymmetry is deliberate.
  void Add(std::string_view userName, std::string_view networkName,
           std::weak_ptr<ClientSocket> client);
  void Remove(std::string_view userName, std::string_view networkName);
  void Clear();
  // Shows pending changes now.
  void Update();

  // The row's session; null if there is no such row or the session has ended.
  std::shared_ptr<ClientSocket> ClientAt(int row) const;

  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

 private:
  struct Row {
    std::uint64_t number;  // ascending, so a row is found by binary search
    std::string userName;
    std::string networkName;
    std::weak_ptr<ClientSocket> client;
    bool hasLeft = false;
  };

  void RemoveThoseWhoLeft();

  // Pointers, so that closing a gap moves little memory.
  std::vector<std::unique_ptr<Row>> myRows;
  int myShown = 0;  // rows that the view knows; the rest is pending
  int myLeft = 0;   // shown rows that are to be removed
  std::unordered_map<std::string, std::uint64_t> myNumbers;  // by folded user name
  std::uint64_t myNextNumber = 0;
  CoalescingTimer myUpdating;
};

}  // namespace corvane
