#pragma once

#include <functional>

#include <QHeaderView>
#include <QLineEdit>
#include <QSortFilterProxyModel>
#include <QTableView>
#include <QWidget>

#include "map/members_model.h"

namespace corvane::map {

// The list of members and the user with a filter field. It shows as text what the map shows as
// markers. The menu of its heading switches columns.
class MembersPanel : public QWidget {
  Q_DECLARE_TR_FUNCTIONS(corvane::map::MembersPanel)

 public:
  MembersPanel(client::Members& members, QWidget* parent);

  // The user selected a member in the list; null if the selection is empty now.
  std::function<void(const client::Member*)> Selected;
  // The user selected its own row.
  std::function<void()> OwnSelected;
  // A double click or the Return key.
  std::function<void(const client::Member&)> Activated;
  std::function<void(const client::Member&, QPoint globalPosition)> MenuRequested;

  // Shows the states of alarms in the list.
  void ShowAlarms(const AlarmWatch& watch) { myModel.ShowAlarms(watch); }

  // Selects the row without raising Selected. Null selects none.
  void Select(const client::Member* member);
  bool HasSelection() const { return lstMembers->currentIndex().isValid(); }
  // Without a name the user has no row.
  void ShowOwn(const std::string& name, const std::optional<client::Report>& report) {
    myModel.ShowOwn(name, report);
  }

  // The columns with their widths and order, for the settings.
  QByteArray Columns() const { return lstMembers->horizontalHeader()->saveState(); }
  void SetColumns(const QByteArray& columns) const;
  // One for each column that can be hidden.
  QList<QAction*> ColumnActions() const { return lstMembers->horizontalHeader()->actions(); }

  // The controls, in tab order. The panel owns them.
  QLineEdit* fldFilter;
  QTableView* lstMembers;

 private:
  void SetUpList();
  void SetUpColumns();
  void Report(const QModelIndex& index) const;
  const client::Member* MemberAt(const QModelIndex& index) const;
  void SetCurrent(const QModelIndex& index) const;
  void Activate(const QModelIndex& index);
  void OpenMenu(QPoint position);

  MembersModel myModel;
  QSortFilterProxyModel myProxy;
  bool myReportsSelection = true;
};

}  // namespace corvane::map
