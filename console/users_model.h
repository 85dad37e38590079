#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include <QAbstractTableModel>

#include "framework/gathering.h"

namespace corvane {

class ClientSocket;

// The logged-in users as rows of a list: user name, name of the network, and the session, held
// weakly. A log-in adds a row unless there is one of that user name, whatever its network; a
// log-out removes the row of that name and that network only. This asymmetry is deliberate. No
// case makes a second row of one name, so an index by name finds the row of either. A row comes and
// goes at once; the changes of the next 20 ms are shown together, so that thousands cost the view
// few layouts, and a user who comes and goes within that time costs it nothing.
class UsersModel : public QAbstractTableModel {
 public:
  UsersModel();

  void LogIn(std::string_view userName, std::string_view networkName,
             std::weak_ptr<ClientSocket> client);
  void LogOut(std::string_view userName, std::string_view networkName);
  void Clear();
  // Has the rows tell all that was noted.
  void Update();

  // The row's session; none for a row that does not exist and for a session that is gone.
  std::shared_ptr<ClientSocket> ClientAt(int row) const;

  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

 private:
  struct Row {
    std::uint64_t number;  // grows from row to row, so a row is found by bisection
    std::string userName;
    std::string networkName;
    std::weak_ptr<ClientSocket> client;
    bool hasLeft = false;
  };

  void RemoveThoseWhoLeft();

  // Rows are pointed to, so that closing a gap moves one pointer a row.
  std::vector<std::unique_ptr<Row>> myRows;
  int myShown = 0;  // the view knows so many; the others are to come
  int myLeft = 0;   // of those, so many are to go
  std::unordered_map<std::string, std::uint64_t> myNumbers;  // by folded user name
  std::uint64_t myNextNumber = 0;
  Gathering myUpdating;
};

}  // namespace corvane
