#include "map/bans_dialog.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QTextDocument>
#include <QVBoxLayout>

#include "framework/text.h"
#include "framework/visible_text.h"

namespace corvane::map {
namespace {

enum BanColumn { kBanAddress, kBanBy, kBanReason };

constexpr std::size_t kMaxCell = 40;  // beside the reason

}  // namespace

BansDialog::BansDialog(QWidget& owner)
    : QDialog(&owner),
      lstBans(new QTreeWidget(this)),
      btnLift(new QPushButton(tr("&Lift Selected"), this)),
      btnClose(new QPushButton(tr("Close"), this)),
      myCount(new QLabel(tr("Asking for the bans..."), this)) {
  setObjectName(QStringLiteral("BansDialog"));
  setWindowTitle(tr("Bans"));
  setAttribute(Qt::WA_DeleteOnClose);
  resize(fontMetrics().averageCharWidth() * 90, fontMetrics().height() * 20);
  lstBans->setAccessibleName(tr("Bans"));
  lstBans->setHeaderLabels({tr("Address"), tr("By"), tr("Reason"), tr("Date")});
  lstBans->setRootIsDecorated(false);
  lstBans->setUniformRowHeights(true);
  lstBans->setSelectionMode(QAbstractItemView::ExtendedSelection);
  lstBans->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
  lstBans->header()->setSectionResizeMode(kBanReason, QHeaderView::Stretch);
  lstBans->header()->setStretchLastSection(false);
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

  connect(lstBans, &QTreeWidget::itemSelectionChanged, this,
          [this] { btnLift->setEnabled(!lstBans->selectedItems().isEmpty()); });
  connect(btnLift, &QPushButton::clicked, this, [this] {
    for (const QTreeWidgetItem* row : lstBans->selectedItems()) {
      if (Lifted) Lifted(TextFromDisplay(row->data(kBanAddress, Qt::UserRole).toString()));
    }
  });
  connect(btnClose, &QPushButton::clicked, this, &QDialog::reject);
}

void BansDialog::Show(const client::BanList& list) {
  QList<QTreeWidgetItem*> rows;
  for (const client::Ban& ban : list.bans) {
    const QString reason = VisibleText(ban.reason);
    auto* row = new QTreeWidgetItem(QStringList{VisibleText(ban.address, kMaxCell),
                                                VisibleText(ban.by, kMaxCell), reason,
                                                VisibleText(ban.date, kMaxCell)});
    row->setData(kBanAddress, Qt::UserRole, DisplayText(ban.id));
    row->setSizeHint(kBanReason, QSize(0, fontMetrics().height() + 6));
    row->setToolTip(kBanReason, Qt::convertFromPlainText(reason, Qt::WhiteSpaceNormal));
    rows.append(row);
  }
  // Also ends the selection, which would hit the bans that follow those lifted.
  lstBans->clear();
  lstBans->addTopLevelItems(rows);
  // Without this the first row becomes the current one when the list gets the focus, and if it is
  // the only one, no arrow key selects it.
  lstBans->setCurrentIndex({});
  const QString count = rows.size() == 1 ? tr("1 ban") : tr("%1 bans").arg(rows.size());
  myCount->setText(
      list.leftOut == 0
          ? count
          : tr("%1, and %2 entries that cannot be shown").arg(count).arg(list.leftOut));
}

}  // namespace corvane::map
