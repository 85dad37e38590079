#include "console/records_dialog.h"

#include <utility>

#include <QScreen>
#include <QVBoxLayout>

namespace corvane {
namespace {

constexpr int kInitialColumns = 100;  // characters
constexpr int kInitialLines = 24;

}  // namespace

RecordsDialog::RecordsDialog(const QString& name, const QString& title, QStringList headings,
                             std::vector<RecordsModel::Record> records, DeleteRecords deleteRecords,
                             QWidget& owner)
    : Dialog(name, title, owner),
      myRecords(std::move(headings), std::move(records)),
      myDeleteRecords(std::move(deleteRecords)) {
  myList = new ListBox(title, ListBox::Heading::Shown, ListBox::Selection::Several, this);
  btnDel = new QPushButton(QStringLiteral("Delete Selected"), this);
  auto* column = new QVBoxLayout(this);
  column->addWidget(myList);
  column->addLayout(ButtonRow({btnDel}));
  const QSize size(kInitialColumns * fontMetrics().averageCharWidth(),
                   kInitialLines * fontMetrics().lineSpacing());
  resize(size.boundedTo(screen()->availableSize()));
  column->activate();
  myList->setModel(&myRecords);
  myList->FitColumns();

  const auto enable = [this] { btnDel->setEnabled(myList->selectionModel()->hasSelection()); };
  enable();
  connect(myList->selectionModel(), &QItemSelectionModel::selectionChanged, this, enable);
  connect(btnDel, &QPushButton::clicked, this, &RecordsDialog::btnDel_Action);
  myList->DeleteRequested = [this] { btnDel_Action(); };
}

void RecordsDialog::btnDel_Action() {
  const std::vector<int> rows = myList->SelectedRows();
  std::vector<std::int64_t> ids;
  ids.reserve(rows.size());
  for (const int row : rows)
    ids.push_back(myRecords.IdAt(row));
  myDeleteRecords(ids);
  myRecords.Remove(rows);
}

}  // namespace corvane
