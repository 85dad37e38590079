#include "console/list_box.h"

#include <algorithm>
#include <cstddef>

#include <QEvent>
#include <QHeaderView>
#include <QHelpEvent>
#include <QStyledItemDelegate>
#include <QToolTip>

namespace corvane {
namespace {

constexpr int kRowPadding = 4;
constexpr int kNarrowestColumn = 40;

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

ListBox::ListBox(const QString& name, Heading heading, QWidget* parent) : QTableView(parent) {
  setAccessibleName(name);
  setItemDelegate(new RowDelegate(this));
  setEditTriggers(NoEditTriggers);
  setSelectionBehavior(SelectRows);
  setSelectionMode(SingleSelection);
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
}

void ListBox::setModel(QAbstractItemModel* model) {
  QTableView::setModel(model);
  const int columns = model->columnCount();
  myShares.assign(static_cast<std::size_t>(columns), 1.0 / columns);
  ShareWidth();
}

int ListBox::SelectedRow() const {
  const QModelIndexList rows = selectionModel()->selectedRows();
  return rows.isEmpty() ? -1 : rows.first().row();
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
