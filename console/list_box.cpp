#include "console/list_box.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <numeric>

#include <QClipboard>
#include <QContextMenuEvent>
#include <QGuiApplication>
#include <QHeaderView>
#include <QHelpEvent>
#include <QStyledItemDelegate>
#include <QToolTip>

namespace corvane {
namespace {

constexpr int kRowPadding = 4;
constexpr int kNarrowestColumn = 40;
constexpr std::chrono::milliseconds kBetweenPaints{100};

// The selected row is marked as a whole; a frame around one of its cells would only blur that.
class RowDelegate : public QStyledItemDelegate {
 public:
  using QStyledItemDelegate::QStyledItemDelegate;

 protected:
  void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override {
    QStyledItemDelegate::initStyleOption(option, index);
    option->state &= ~QStyle::State_HasFocus;
  }
};

}  // namespace

ListBox::ListBox(const QString& name, Heading heading, Selection selection, QWidget* parent)
    : QTableView(parent) {
  setAccessibleName(name);
  setItemDelegate(new RowDelegate(this));
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
  header->setMinimumSectionSize(kNarrowestColumn);
  header->setStretchLastSection(true);
  connect(header, &QHeaderView::sectionResized, this,
          [this](int column, int, int width) { KeepShare(column, width); });
  myPaintTimer.setSingleShot(true);
  myPaintTimer.setInterval(kBetweenPaints);
  connect(&myPaintTimer, &QTimer::timeout, this, [this] { viewport()->setUpdatesEnabled(true); });
}

void ListBox::setModel(QAbstractItemModel* model) {
  QTableView::setModel(model);
  connect(model, &QAbstractItemModel::rowsInserted, this, &ListBox::PaintLater);
  connect(model, &QAbstractItemModel::rowsRemoved, this, &ListBox::PaintLater);
  const int columns = model->columnCount();
  myShares.assign(static_cast<std::size_t>(columns), 1.0 / columns);
  ShareWidth();
}

void ListBox::FitColumns() {
  for (std::size_t column = 0; column < myShares.size(); ++column) {
    const int index = static_cast<int>(column);
    myShares[column] =
        std::max(sizeHintForColumn(index), horizontalHeader()->sectionSizeHint(index));
  }
  // The longest texts are cut before all others are.
  double sum = std::accumulate(myShares.begin(), myShares.end(), 0.0);
  double& widest = *std::max_element(myShares.begin(), myShares.end());
  const double shortage = std::clamp(sum - viewport()->width(), 0.0, widest / 2);
  widest -= shortage;
  sum -= shortage;
  for (double& share : myShares)
    share /= sum;
  ShareWidth();
}

// Painting for each row that comes or goes would cost more than serving the client that it shows.
void ListBox::PaintLater() {
  if (myPaintTimer.isActive()) return;
  viewport()->setUpdatesEnabled(false);
  myPaintTimer.start();
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

void ListBox::contextMenuEvent(QContextMenuEvent* event) {
  QPoint position = event->globalPos();
  if (event->reason() == QContextMenuEvent::Keyboard) {
    const QRect row = visualRect(model()->index(SelectedRow(), 0));
    const QRect shown = row.intersected(viewport()->rect());
    position = viewport()->mapToGlobal(shown.isEmpty() ? QPoint() : shown.bottomLeft());
  }
  if (MenuRequested) MenuRequested(position);
}

void ListBox::keyPressEvent(QKeyEvent* event) {
  if (event->matches(QKeySequence::Copy)) {
    CopySelectedRows();
  } else {
    QTableView::keyPressEvent(event);
  }
}

void ListBox::mousePressEvent(QMouseEvent* event) {
  // A click beside the rows takes the selection back.
  if (!indexAt(event->pos()).isValid()) clearSelection();
  QTableView::mousePressEvent(event);
}

void ListBox::rowsAboutToBeRemoved(const QModelIndex& parent, int first, int last) {
  const int current = currentIndex().row();
  QTableView::rowsAboutToBeRemoved(parent, first, last);
  // Qt has selected a neighbour, on which the operator's next action would fall.
  if (current >= first && current <= last) clearSelection();
}

void ListBox::resizeEvent(QResizeEvent* event) {
  QTableView::resizeEvent(event);
  ShareWidth();
}

void ListBox::changeEvent(QEvent* event) {
  QTableView::changeEvent(event);
  if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange) FitRowHeight();
}

bool ListBox::viewportEvent(QEvent* event) {
  if (event->type() != QEvent::ToolTip) return QTableView::viewportEvent(event);
  const auto* help = static_cast<QHelpEvent*>(event);
  const QModelIndex index = indexAt(help->pos());
  const QRect cell = visualRect(index);
  if (!index.isValid() || sizeHintForIndex(index).width() <= cell.width()) {
    QToolTip::hideText();
    return true;
  }
  // Marked up and escaped, so that it wraps and nothing in it is taken for markup.
  const QString text = index.data().toString().toHtmlEscaped();
  QToolTip::showText(help->globalPos(), QStringLiteral("<p>%1</p>").arg(text), viewport(), cell);
  return true;
}

void ListBox::FitRowHeight() {
  verticalHeader()->setDefaultSectionSize(fontMetrics().height() + kRowPadding);
}

// The last column is not set: it takes what is left.
void ListBox::ShareWidth() {
  mySharing = true;
  for (std::size_t column = 0; column + 1 < myShares.size(); ++column) {
    setColumnWidth(static_cast<int>(column), qRound(myShares[column] * viewport()->width()));
  }
  mySharing = false;
}

void ListBox::KeepShare(int column, int width) {
  const auto index = static_cast<std::size_t>(column);
  if (mySharing || index + 1 >= myShares.size()) return;
  myShares[index] = static_cast<double>(width) / std::max(1, viewport()->width());
}

}  // namespace corvane
