#include "map/bans_dialog.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QVBoxLayout>

#include "framework/text.h"
#include "framework/visible_text.h"

namespace corvane::map {

BansDialog::BansDialog(QWidget& owner)
    : QDialog(&owner),
      lstBans(new QTableWidget(0, 4, this)),
      btnLift(new QPushButton(tr("&Lift Selected"), this)),
      btnClose(new QPushButton(tr("Close"), this)),
      myCount(new QLabel(tr("Asking for the bans..."), this)) {
  setObjectName(QStringLiteral("BansDialog"));
  setWindowTitle(tr("Bans"));
  setAttribute(Qt::WA_DeleteOnClose);
  resize(620, 320);
  lstBans->setAccessibleName(tr("Bans"));
  lstBans->setHorizontalHeaderLabels({tr("Address"), tr("By"), tr("Reason"), tr("Date")});
  lstBans->setSelectionBehavior(QAbstractItemView::SelectRows);
  lstBans->setEditTriggers(QAbstractItemView::NoEditTriggers);
  lstBans->setTabKeyNavigation(false);
  lstBans->setShowGrid(false);
  lstBans->verticalHeader()->hide();
  lstBans->horizontalHeader()->setSectionResizeMode(2, QHeaderView::Stretch);
  lstBans->horizontalHeader()->setHighlightSections(false);
  lstBans->horizontalHeader()->resizeSection(0, 130);
  lstBans->horizontalHeader()->resizeSection(3, 140);
  btnLift->setEnabled(false);

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
  lstBans->setRowCount(static_cast<int>(list.bans.size()));
  int row = 0;
  for (const client::Ban& ban : list.bans) {
    int column = 0;
    for (const std::string* text : {&ban.address, &ban.by, &ban.reason, &ban.date})
      lstBans->setItem(row, column++, new QTableWidgetItem(VisibleText(*text)));
    lstBans->item(row, 0)->setData(Qt::UserRole, DisplayText(ban.id));
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
