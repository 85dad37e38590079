#include "console/list_box.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <tuple>
#include <utility>

#include <QClipboard>
#include <QContextMenuEvent>
#include <QGuiApplication>
#include <QHeaderView>
#include <QHelpEvent>
#include <QPainter>
#include <QStyledItemDelegate>
#include <QToolTip>

namespace corvane {
namespace {

constexpr int kRowPadding = 4;
constexpr int kMinColumnWidth = 40;
constexpr int kRowsMeasured = 500;
constexpr std::chrono::milliseconds kBetweenPaints{100};

// Marks rows rather than cells: selected rows by their background, the current row by a frame
// around all of its cells.
class RowDelegate : public QStyledItemDelegate {
 public:
  explicit RowDelegate(QTableView& list) : QStyledItemDelegate(&list), myList(list) {}

  void paint(QPainter* painter, const QStyleOptionViewItem& option,
             const QModelIndex& index) const override {
    QStyledItemDelegate::paint(painter, option, index);
    if (!myList.hasFocus() || index.row() != myList.currentIndex().row()) return;
    const bool isSelected = option.state.testFlag(QStyle::State_Selected);
    const QPalette::ColorRole role = isSelected ? QPalette::HighlightedText : QPalette::Text;
    const QRect frame = option.rect.adjusted(0, 0, -1, -1);
    painter->setPen(QPen(option.palette.color(role), 1, Qt::DotLine));
    painter->drawLine(frame.topLeft(), frame.topRight());
    painter->drawLine(frame.bottomLeft(), frame.bottomRight());
    if (index.column() == 0) painter->drawLine(frame.topLeft(), frame.bottomLeft());
    if (index.column() == index.model()->columnCount() - 1) {
      painter->drawLine(frame.topRight(), frame.bottomRight());
    }
  }

 protected:
  void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override {
    QStyledItemDelegate::initStyleOption(option, index);
    option->state &= ~QStyle::State_HasFocus;
  }

 private:
  const QTableView& myList;
};

// Up or Down without Ctrl. (With Ctrl, only the frame moves.)
bool IsStep(const QKeyEvent& key) {
  return (key.key() == Qt::Key_Up || key.key() == Qt::Key_Down) &&
         !key.modifiers().testFlag(Qt::ControlModifier);
}

bool IsEnter(const QKeyEvent& key) {
  return key.key() == Qt::Key_Return || key.key() == Qt::Key_Enter;
}

}  // namespace

ListBox::ListBox(const QString& name, Heading heading, Selection selection, QWidget* parent)
    : QTableView(parent),
      myPainting([this] { viewport()->setUpdatesEnabled(true); }, CoalescingTimer::First::Now,
                 kBetweenPaints) {
  setAccessibleName(name);
  setItemDelegate(new RowDelegate(*this));
  setEditTriggers(NoEditTriggers);
  setSelectionBehavior(SelectRows);
  setSelectionMode(selection == Selection::One ? SingleSelection : ExtendedSelection);
  setTabKeyNavigation(false);
  setShowGrid(false);
  setWordWrap(false);
  setCornerButtonEnabled(false);
  setHorizontalScrollMode(ScrollPerPixel);

  verticalHeader()->hide();
  verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
  verticalHeader()->setMinimumSectionSize(1);
  FitRowHeight();

  QHeaderView* header = horizontalHeader();
  header->setVisible(heading == Heading::Shown);
  header->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
  header->setHighlightSections(false);
  header->setSectionsClickable(false);
  header->setResizeContentsPrecision(kRowsMeasured);
  header->setMinimumSectionSize(kMinColumnWidth);
  header->setStretchLastSection(true);
}

void ListBox::setModel(QAbstractItemModel* model) {
  QTableView::setModel(model);
  connect(model, &QAbstractItemModel::rowsInserted, this, &ListBox::PaintRows);
  connect(model, &QAbstractItemModel::rowsRemoved, this, &ListBox::PaintRows);
}

void ListBox::FitColumns() {
  QHeaderView* header = horizontalHeader();
  const int columns = model()->columnCount();
  const int share = viewport()->width() / columns;
  int widest = 0;
  int most = 0;
  for (int column = 0; column < columns; ++column) {
    const int width = std::max({sizeHintForColumn(column), header->sectionSizeHint(column),
                                sizeHintForIndex(LongestText(column)).width()});
    if (width > most) std::tie(widest, most) = std::pair(column, width);
    setColumnWidth(column, std::min(width, share));
  }
  header->setStretchLastSection(false);
  header->setSectionResizeMode(widest, QHeaderView::Stretch);
}

QModelIndex ListBox::LongestText(int column) const {
  QModelIndex longest;
  qsizetype most = 0;
  for (int row = 0; row < model()->rowCount(); ++row) {
    const QModelIndex index = model()->index(row, column);
    const qsizetype length = index.data().toString().size();
    if (length > most) std::tie(longest, most) = std::pair(index, length);
  }
  return longest;
}

// Painting at each change of rows would cost more than serving the client that a row shows.
void ListBox::PaintRows() {
  viewport()->setUpdatesEnabled(false);
  myPainting.Note();
}

int ListBox::SelectedRow() const {
  const std::vector<int> rows = SelectedRows();
  return rows.empty() ? -1 : rows.front();
}

std::vector<int> ListBox::SelectedRows() const {
  std::vector<int> rows;
  for (const QItemSelectionRange& range : selectionModel()->selection()) {
    for (int row = range.top(); row <= range.bottom(); ++row)
      rows.push_back(row);
  }
  std::sort(rows.begin(), rows.end());
  return rows;
}

void ListBox::CopySelectedRows() const {
  QString text;
  for (const int row : SelectedRows()) {
    if (!text.isEmpty()) text += QLatin1Char('\n');
    for (int column = 0; column < model()->columnCount(); ++column) {
      if (column > 0) text += QLatin1Char('\t');
      text += model()->index(row, column).data().toString();
    }
  }
  if (!text.isEmpty()) QGuiApplication::clipboard()->setText(text);
}

// By row; a table's cursor moves by cell.
QModelIndex ListBox::moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) {
  if (action == MoveHome) return model()->index(0, 0);
  if (action == MoveEnd) return model()->index(model()->rowCount() - 1, 0);
  return QTableView::moveCursor(action, modifiers);
}

void ListBox::contextMenuEvent(QContextMenuEvent* event) {
  if (event->reason() == QContextMenuEvent::Keyboard) {
    OpenMenuByKey();
  } else {
    OpenMenu(event->globalPos());
  }
}

void ListBox::OpenMenu(QPoint globalPosition) {
  if (!ConstructContextualMenu) return;
  auto* menu = new QMenu(this);
  menu->setAttribute(Qt::WA_DeleteOnClose);
  ConstructContextualMenu(*menu);
  if (menu->isEmpty()) {
    delete menu;
  } else {
    menu->popup(globalPosition);
  }
}

void ListBox::OpenMenuByKey() {
  const QRect row = visualRect(model()->index(SelectedRow(), 0));
  const QRect shown = row.intersected(viewport()->rect());
  OpenMenu(viewport()->mapToGlobal(shown.isEmpty() ? QPoint() : shown.bottomLeft()));
}

void ListBox::keyPressEvent(QKeyEvent* event) {
  if (TakeKey(*event)) return;
  const QModelIndex current = currentIndex();
  const bool hadSelection = selectionModel()->hasSelection();
  if (IsStep(*event) && !hadSelection && current.isValid()) {
    // Selects the row with the frame, not its neighbour.
    selectRow(current.row());
  } else {
    QTableView::keyPressEvent(event);
  }
  if (currentIndex() == current && selectionModel()->hasSelection() == hadSelection) return;
  // Below the list, so that it covers no row.
  ShowTip(currentIndex().row(), mapToGlobal(rect().bottomLeft()));
}

bool ListBox::TakeKey(const QKeyEvent& key) {
  const bool hasSelection = selectionModel()->hasSelection();
  if (key.matches(QKeySequence::Copy)) {
    CopySelectedRows();
  } else if (key.key() == Qt::Key_F10 && key.modifiers() == Qt::ShiftModifier) {
    // Some systems send no menu event for it.
    OpenMenuByKey();
  } else if (IsEnter(key) && RowOpened && hasSelection) {
    // A repeated Enter may still belong to the dialog that it has just closed.
    if (!key.isAutoRepeat()) RowOpened();
  } else if (key.key() == Qt::Key_Delete && DeleteRequested && hasSelection) {
    if (!key.isAutoRepeat()) DeleteRequested();
  } else {
    return false;
  }
  return true;
}

void ListBox::mousePressEvent(QMouseEvent* event) {
  // A click beside the rows clears the selection.
  if (!indexAt(event->pos()).isValid()) clearSelection();
  QTableView::mousePressEvent(event);
}

void ListBox::mouseDoubleClickEvent(QMouseEvent* event) {
  QTableView::mouseDoubleClickEvent(event);
  if (event->button() == Qt::LeftButton && indexAt(event->pos()).isValid() && RowOpened) {
    RowOpened();
  }
}

void ListBox::focusInEvent(QFocusEvent* event) {
  // Qt would put the frame on the first row, which may be out of view.
  if (!currentIndex().isValid()) {
    selectionModel()->setCurrentIndex(indexAt(QPoint()), QItemSelectionModel::NoUpdate);
  }
  QTableView::focusInEvent(event);
}

void ListBox::currentChanged(const QModelIndex& current, const QModelIndex& previous) {
  QTableView::currentChanged(current, previous);
  // Qt repaints only the two cells, but the frame surrounds the row.
  viewport()->update();
}

void ListBox::rowsAboutToBeRemoved(const QModelIndex& parent, int first, int last) {
  const int current = currentIndex().row();
  QTableView::rowsAboutToBeRemoved(parent, first, last);
  // Qt has selected a neighbour, which the operator's next action would hit.
  if (current >= first && current <= last) clearSelection();
}

void ListBox::changeEvent(QEvent* event) {
  QTableView::changeEvent(event);
  if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange) FitRowHeight();
}

bool ListBox::viewportEvent(QEvent* event) {
  if (event->type() != QEvent::ToolTip) return QTableView::viewportEvent(event);
  const auto* help = static_cast<QHelpEvent*>(event);
  ShowTip(indexAt(help->pos()).row(), help->globalPos());
  return true;
}

void ListBox::FitRowHeight() {
  verticalHeader()->setDefaultSectionSize(fontMetrics().height() + kRowPadding);
}

QString ListBox::Tip(int row) const {
  if (row < 0) return {};
  QStringList paragraphs;
  for (int column = 0; column < model()->columnCount(); ++column) {
    const QModelIndex index = model()->index(row, column);
    const bool isCut = sizeHintForIndex(index).width() > visualRect(index).width();
    if (isCut) paragraphs += index.data().toString();
  }
  const QString more = model()->index(row, 0).data(Qt::ToolTipRole).toString();
  if (!more.isEmpty()) paragraphs += more;
  // Rich text wraps; escaping keeps the texts from being read as markup.
  QString tip;
  for (const QString& paragraph : paragraphs)
    tip += QStringLiteral("<p>%1</p>").arg(paragraph.toHtmlEscaped());
  return tip;
}

void ListBox::ShowTip(int row, QPoint globalPosition) {
  // An empty text hides the tip.
  const QRect rows = visualRect(model()->index(row, 0)) |
                     visualRect(model()->index(row, model()->columnCount() - 1));
  QToolTip::showText(globalPosition, Tip(row), viewport(), rows);
}

}  // namespace corvane
