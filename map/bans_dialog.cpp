#include "map/bans_dialog.h"

#include <utility>

#include <QHBoxLayout>
#include <QHeaderView>
#include <QTextDocument>
#include <QVBoxLayout>

#include "framework/text.h"
#include "framework/visible_text.h"

namespace corvane::map {
namespace {

enum BanColumn { kAddress, kBy, kReason, kDate, kBanColumns };

constexpr int kCellPadding = 16;

}  // namespace

BansDialog::BansDialog(QWidget& owner)
    : QDialog(&owner),
      lstBans(new QTableWidget(0, kBanColumns, this)),
      btnLift(new QPushButton(tr("&Lift Selected"), this)),
      btnClose(new QPushButton(tr("Close"), this)),
      myCount(new QLabel(tr("Asking for the bans..."), this)) {
  setObjectName(QStringLiteral("BansDialog"));
  setWindowTitle(tr("Bans"));
  setAttribute(Qt::WA_DeleteOnClose);
  resize(fontMetrics().averageCharWidth() * 90, fontMetrics().height() * 20);
  lstBans->setAccessibleName(tr("Bans"));
  lstBans->setHorizontalHeaderLabels({tr("Address"), tr("By"), tr("Reason"), tr("Date")});
  lstBans->setSelectionBehavior(QAbstractItemView::SelectRows);
  lstBans->setEditTriggers(QAbstractItemView::NoEditTriggers);
  // Without this the first row becomes the current one when the list gets the focus, and if it is
  // the only one, no arrow key selects it.
  lstBans->setCurrentIndex({});
  lstBans->setTabKeyNavigation(false);
  lstBans->setShowGrid(false);
  lstBans->setWordWrap(false);
  lstBans->verticalHeader()->hide();
  lstBans->verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 6);
  QHeaderView* header = lstBans->horizontalHeader();
  header->setHighlightSections(false);
  header->setSectionResizeMode(kReason, QHeaderView::Stretch);
  for (const auto& [column, widest] :
       {std::pair(kAddress, "000.000.000.000"), std::pair(kBy, "000000000000"),
        std::pair(kDate, "00 Mmm 0000 00:00:00")})
    header->resizeSection(column, fontMetrics().horizontalAdvance(widest) + kCellPadding);
  btnLift->setEnabled(false);
  // Return in the list lifts nothing.
  btnClose->setDefault(true);

  auto* buttons = new QHBoxLayout;
  buttons->addWidget(myCount);
  buttons->addStretch();
  buttons->addWidget(btnLift);
  buttons->addWidget(btnClose);
  auto* column = new QVBoxLayout(this);
  column->addWidget(lstBans);
  column->addLayout(buttons);

  connect(lstBans, &QTableWidget::itemSelectionChanged, this,
          [this] { btnLift->setEnabled(!lstBans->selectedItems().isEmpty()); });
  connect(btnLift, &QPushButton::clicked, this, [this] { LiftSelected(); });
  connect(btnClose, &QPushButton::clicked, this, [this] { reject(); });
}

void BansDialog::Show(const client::BanList& list) {
  // Ends the selection, which would hit the bans that follow those lifted.
  lstBans->setRowCount(0);
  lstBans->setRowCount(static_cast<int>(list.bans.size()));
  int row = 0;
  for (const client::Ban& ban : list.bans) {
    int column = 0;
    for (const std::string* text : {&ban.address, &ban.by, &ban.reason, &ban.date})
      lstBans->setItem(row, column++, new QTableWidgetItem(VisibleText(*text)));
    lstBans->item(row, kAddress)->setData(Qt::UserRole, DisplayText(ban.id));
    lstBans->item(row, kReason)
        ->setToolTip(Qt::convertFromPlainText(VisibleText(ban.reason), Qt::WhiteSpaceNormal));
    ++row;
  }
  const QString count = row == 1 ? tr("1 ban") : tr("%1 bans").arg(row);
  myCount->setText(
      list.leftOut == 0
          ? count
          : tr("%1, and %2 entries that cannot be shown").arg(count).arg(list.leftOut));
}

void BansDialog::LiftSelected() const {
  for (const QModelIndex& index : lstBans->selectionModel()->selectedRows()) {
    if (Lifted) Lifted(TextFromDisplay(index.data(Qt::UserRole).toString()));
  }
}

}  // namespace corvane::map
