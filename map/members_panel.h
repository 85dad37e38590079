#pragma once

#include <functional>

#include <QLineEdit>
#include <QSortFilterProxyModel>
#include <QTableView>
#include <QWidget>

#include "map/members_model.h"

namespace corvane::map {

// The list of members with a filter field. It shows as text what the map shows as
// markers.
class MembersPanel : public QWidget {
  Q_DECLARE_TR_FUNCTIONS(corvane::map::MembersPanel)

 public:
  MembersPanel(client::Members& members, QWidget* parent);

  // The user selected a member in the list; null if the selection is empty now.
  std::function<void(const client::Member*)> Selected;
  // A double click or the Return key.
  std::function<void(const client::Member&)> Activated;
  std::function<void(const client::Member&, QPoint globalPosition)> MenuRequested;

  // Selects the row without raising Selected. Null selects none.
  void Select(const client::Member* member);

  // The controls, in tab order. The panel owns them.
  QLineEdit* fldFilter;
  QTableView* lstMembers;

 private:
  void SetUpList();
  const client::Member* MemberAt(const QModelIndex& index) const;
  void SetCurrent(const QModelIndex& index) const;
  void Activate(const QModelIndex& index);
  void OpenMenu(QPoint position);

  MembersModel myModel;
  QSortFilterProxyModel myProxy;
  bool myReportsSelection = true;
};

}  // namespace corvane::map
