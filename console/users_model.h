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

// The logged-in users as rows of a list: user name, network name and session, held weakly. Login
// adds a row unless any network already has one of that user name; Logout removes the row only if
// both name and network match. This asymmetry is deliberate. User names are therefore unique, and
// an index by name finds the row. The first change is shown at once, and those of the next 20 ms
// together: thousands cost the view few layouts, and a user who comes and goes in that time none.
class UsersModel : public QAbstractTableModel {
 public:
  UsersModel();

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
