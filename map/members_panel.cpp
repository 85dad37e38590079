#include "map/members_panel.h"

#include <QAction>
#include <QHeaderView>
#include <QVBoxLayout>

namespace corvane::map {

using client::Member;

MembersPanel::MembersPanel(client::Members& members, QWidget* parent)
    : QWidget(parent),
      fldFilter(new QLineEdit(this)),
      lstMembers(new QTableView(this)),
      myModel(members) {
  fldFilter->setObjectName(QStringLiteral("fldFilter"));
  fldFilter->setPlaceholderText(tr("Filter by name"));
  fldFilter->setAccessibleName(tr("Filter members by name"));
  fldFilter->setClearButtonEnabled(true);
  lstMembers->setObjectName(QStringLiteral("lstMembers"));
  lstMembers->setAccessibleName(tr("Members"));

  myProxy.setSourceModel(&myModel);
  myProxy.setSortRole(MembersModel::kSortRole);
  myProxy.setFilterKeyColumn(MembersModel::kName);
  myProxy.setFilterCaseSensitivity(Qt::CaseInsensitive);
  SetUpList();

  auto* column = new QVBoxLayout(this);
  column->setContentsMargins({});
  column->addWidget(fldFilter);
  column->addWidget(lstMembers);

  connect(fldFilter, &QLineEdit::textChanged, this,
          [this](const QString& text) { myProxy.setFilterFixedString(text); });
  connect(lstMembers->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
          [this](const QModelIndex& current) {
            if (myReportsSelection && Selected) Selected(MemberAt(current));
          });
  // A click on the selected row counts as a selection too.
  connect(lstMembers, &QTableView::clicked, this, [this](const QModelIndex& index) {
    if (Selected) Selected(MemberAt(index));
  });
  connect(lstMembers, &QTableView::doubleClicked, this,
          [this](const QModelIndex& index) { Activate(index); });
  const auto onKeys = [this](const QList<QKeySequence>& keys, auto act) {
    auto* action = new QAction(lstMembers);
    action->setShortcuts(keys);
    action->setShortcutContext(Qt::WidgetShortcut);
    lstMembers->addAction(action);
    connect(action, &QAction::triggered, this, act);
  };
  onKeys({Qt::Key_Return, Qt::Key_Enter}, [this] { Activate(lstMembers->currentIndex()); });
  // Not all systems send a context menu event for this key.
  onKeys({Qt::SHIFT | Qt::Key_F10}, [this] { OpenMenu({-1, -1}); });
  lstMembers->setContextMenuPolicy(Qt::CustomContextMenu);
  connect(lstMembers, &QTableView::customContextMenuRequested, this,
          [this](QPoint position) { OpenMenu(position); });
}

void MembersPanel::SetUpList() {
  // Connected before the list connects: it would select a neighbour, and the next action would hit
  // that member.
  connect(&myProxy, &QAbstractItemModel::rowsAboutToBeRemoved, this,
          [this](const QModelIndex&, int first, int last) {
            const int row = lstMembers->currentIndex().row();
            if (first <= row && row <= last) SetCurrent({});
          });
  lstMembers->setModel(&myProxy);
  // Without this the list makes its first row the current one when it gets the focus. The map would
  // jump, and a member would be selected that no row highlights.
  const auto haveNone = [this] { lstMembers->setCurrentIndex({}); };
  haveNone();
  connect(&myProxy, &QAbstractItemModel::modelReset, this, haveNone);
  lstMembers->setSortingEnabled(true);
  lstMembers->sortByColumn(MembersModel::kName, Qt::AscendingOrder);
  lstMembers->setSelectionBehavior(QAbstractItemView::SelectRows);
  lstMembers->setSelectionMode(QAbstractItemView::SingleSelection);
  lstMembers->setTabKeyNavigation(false);
  lstMembers->setShowGrid(false);
  lstMembers->setAlternatingRowColors(true);
  lstMembers->setWordWrap(false);
  lstMembers->verticalHeader()->hide();
  lstMembers->verticalHeader()->setDefaultSectionSize(lstMembers->fontMetrics().height() + 6);
  QHeaderView* header = lstMembers->horizontalHeader();
  header->setHighlightSections(false);
  const int digit = fontMetrics().horizontalAdvance('0');
  for (const int column : {MembersModel::kX, MembersModel::kY, MembersModel::kHp})
    header->resizeSection(column, 6 * digit);
  header->resizeSection(MembersModel::kName, 14 * digit);
  header->resizeSection(MembersModel::kFacet, 7 * digit);
  header->resizeSection(MembersModel::kState, 9 * digit);
  header->setStretchLastSection(true);
}

void MembersPanel::Select(const Member* member) {
  myReportsSelection = false;
  QModelIndex index;
  if (member != nullptr) {
    // A new member has no row before the next update.
    if (myModel.RowOf(*member) < 0) myModel.Update();
    index = myProxy.mapFromSource(myModel.index(myModel.RowOf(*member), 0));
  }
  SetCurrent(index);
  myReportsSelection = true;
}

void MembersPanel::SetCurrent(const QModelIndex& index) const {
  lstMembers->selectionModel()->setCurrentIndex(
      index, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
}

const Member* MembersPanel::MemberAt(const QModelIndex& index) const {
  return index.isValid() ? myModel.MemberAt(myProxy.mapToSource(index).row()) : nullptr;
}

void MembersPanel::Activate(const QModelIndex& index) {
  const Member* member = MemberAt(index);
  if (member != nullptr && Activated) Activated(*member);
}

void MembersPanel::OpenMenu(QPoint position) {
  const QModelIndex index = lstMembers->currentIndex();
  const Member* member = MemberAt(index);
  if (member == nullptr || !MenuRequested) return;
  // A key press has no position.
  if (!lstMembers->visualRect(index).contains(position))
    position = lstMembers->visualRect(index).center();
  MenuRequested(*member, lstMembers->viewport()->mapToGlobal(position));
}

}  // namespace corvane::map
