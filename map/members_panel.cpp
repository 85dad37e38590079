#include "map/members_panel.h"

#include <array>

#include <QAction>
#include <QVBoxLayout>

namespace corvane::map {

using client::Member;

namespace {

// Letters are shortcuts here, as in the map; they do not search.
class MembersTable : public QTableView {
 public:
  using QTableView::QTableView;
  void keyboardSearch(const QString&) override {}
};

}  // namespace

MembersPanel::MembersPanel(client::Members& members, QWidget* parent)
    : QWidget(parent),
      fldFilter(new QLineEdit(this)),
      lstMembers(new MembersTable(this)),
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
  myProxy.setFilterRole(MembersModel::kSortRole);
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
            if (myReportsSelection) Report(current);
          });
  // A click on the selected row counts as a selection too.
  connect(lstMembers, &QTableView::clicked, this,
          [this](const QModelIndex& index) { Report(index); });
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
            if (first <= row && row <= last) Select(nullptr);
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
  SetUpColumns();
}

void MembersPanel::SetUpColumns() {
  QHeaderView* header = lstMembers->horizontalHeader();
  header->setHighlightSections(false);
  const int digit = fontMetrics().horizontalAdvance('0');
  constexpr std::array kDigits{0, 6, 6, 6, 5, 0, 10};
  for (int column = MembersModel::kName + 1; column < MembersModel::kColumns; ++column)
    header->resizeSection(column, kDigits[static_cast<std::size_t>(column)] * digit);
  header->setMinimumSectionSize(5 * digit);
  // They share what the numbers leave.
  for (const int column : {MembersModel::kName, MembersModel::kState})
    header->setSectionResizeMode(column, QHeaderView::Stretch);
  header->setContextMenuPolicy(Qt::ActionsContextMenu);
  for (int column = MembersModel::kName + 1; column < MembersModel::kColumns; ++column) {
    auto* action =
        new QAction(myModel.headerData(column, Qt::Horizontal, Qt::DisplayRole).toString(), header);
    action->setCheckable(true);
    header->addAction(action);
    connect(action, &QAction::toggled, header,
            [header, column](bool isShown) { header->setSectionHidden(column, !isShown); });
    header->setSectionHidden(column, true);
    action->setChecked(column == MembersModel::kHp || column == MembersModel::kState);
  }
}

void MembersPanel::SetColumns(const QByteArray& columns) const {
  QHeaderView* header = lstMembers->horizontalHeader();
  header->restoreState(columns);
  for (int column = MembersModel::kName + 1; column < MembersModel::kColumns; ++column)
    header->actions().at(column - 1)->setChecked(!header->isSectionHidden(column));
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

void MembersPanel::Report(const QModelIndex& index) const {
  const Member* member = MemberAt(index);
  if (Selected) Selected(member);
  if (index.isValid() && member == nullptr && OwnSelected) OwnSelected();
}

void MembersPanel::SetCurrent(const QModelIndex& index) const {
  lstMembers->selectionModel()->setCurrentIndex(
      index, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
}

const Member* MembersPanel::MemberAt(const QModelIndex& index) const {
  const int row = myProxy.mapToSource(index).row();
  return index.isValid() && !myModel.IsOwn(row) ? myModel.MemberAt(row) : nullptr;
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
