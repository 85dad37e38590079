#include "map/alarms_dialog.h"

#include <algorithm>
#include <limits>

#include <QGridLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QShortcut>
#include <QVBoxLayout>

namespace corvane::map {
namespace {

enum CircleColumn { kCircleName, kCircleFacet, kCircleX, kCircleY, kCircleRadius, kCircleColumns };
constexpr int kRowsShown = 4;

QSpinBox* Spin(int value, int min, int max, const QString& name, QWidget* parent) {
  auto* field = new QSpinBox(parent);
  field->setRange(min, max);
  field->setValue(value);
  field->setAccessibleName(name);
  return field;
}

}  // namespace

AlarmsDialog::AlarmsDialog(const AlarmRules& rules, const AlarmCircle& proposal, bool hasTray,
                           QWidget& owner)
    : QDialog(&owner),
      cmbWho{new QComboBox(this), new QComboBox(this), new QComboBox(this), new QComboBox(this),
             new QComboBox(this)},
      spnHitPoints(Spin(rules.hitPoints, 1, std::numeric_limits<int>::max(),
                        tr("Hit points below this are low"), this)),
      cmbUnit(new QComboBox(this)),
      spnSilence(Spin(rules.silence, AlarmRules::kMinSilence, AlarmRules::kMaxSeconds,
                      tr("Seconds of silence"), this)),
      lstCircles(new QTableWidget(0, kCircleColumns, this)),
      btnDraw(new QPushButton(tr("Dra&w on the Map"), this)),
      btnAdd(new QPushButton(tr("&Add"), this)),
      btnDelete(new QPushButton(tr("Dele&te"), this)),
      chkAlert(new QCheckBox(tr("&Mark the window in the task bar"), this)),
      chkNotify(new QCheckBox(tr("Desktop &notification"), this)),
      chkBeep(new QCheckBox(tr("&Beep"), this)),
      spnCooldown(Spin(rules.cooldown, 0, AlarmRules::kMaxSeconds,
                       tr("Time between two alarms of a member and kind"), this)),
      btnOK(new QPushButton(tr("OK"), this)),
      btnCancel(new QPushButton(tr("Cancel"), this)),
      myProposal(proposal) {
  setObjectName(QStringLiteral("AlarmsDialog"));
  setWindowTitle(tr("Alarms"));
  setAttribute(Qt::WA_DeleteOnClose);
  for (std::size_t kind = 0; kind < kAlarmKinds; ++kind) {
    cmbWho[kind]->addItems(
        {tr("Off"), tr("Me"), tr("Followed member"), tr("Me and followed"), tr("Everybody")});
    cmbWho[kind]->setCurrentIndex(static_cast<int>(rules.who[kind]));
  }
  cmbUnit->addItems({tr("% of the highest seen"), tr("hit points")});
  cmbUnit->setCurrentIndex(rules.isShare ? 0 : 1);
  cmbUnit->setAccessibleName(tr("Unit of the limit"));
  for (QSpinBox* field : {spnSilence, spnCooldown})
    field->setSuffix(tr(" s"));
  chkAlert->setChecked(rules.alertsWindow);
  chkNotify->setChecked(rules.notifies);
  chkNotify->setEnabled(hasTray);
  chkBeep->setChecked(rules.beeps);
  if (!hasTray) chkNotify->setText(tr("Desktop &notification (no tray here)"));
  lstCircles->setAccessibleName(tr("Circles"));
  lstCircles->setHorizontalHeaderLabels({tr("Name"), tr("Facet"), tr("X"), tr("Y"), tr("Radius")});
  lstCircles->setSelectionBehavior(QAbstractItemView::SelectRows);
  lstCircles->setSelectionMode(QAbstractItemView::SingleSelection);
  lstCircles->setTabKeyNavigation(false);
  lstCircles->verticalHeader()->hide();
  lstCircles->verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 6);
  QHeaderView* const header = lstCircles->horizontalHeader();
  header->setHighlightSections(false);
  header->setSectionResizeMode(kCircleName, QHeaderView::Stretch);
  for (int column = kCircleFacet; column < kCircleColumns; ++column)
    header->resizeSection(column, 9 * fontMetrics().horizontalAdvance('0'));
  for (const AlarmCircle& circle : rules.circles)
    AddCircle(circle);
  LayOut();
  Wire();
  Check();
  cmbWho[0]->setFocus();
}

void AlarmsDialog::LayOut() {
  auto* grid = new QGridLayout;
  const QString labels[] = {tr("&Low hit points:"), tr("&Death:"), tr("Battle be&gun:"),
                            tr("&Silence:"), tr("A circle &entered:")};
  for (int kind = 0; kind < static_cast<int>(kAlarmKinds); ++kind) {
    auto* label = new QLabel(labels[kind], this);
    label->setBuddy(cmbWho[static_cast<std::size_t>(kind)]);
    grid->addWidget(label, kind, 0);
    grid->addWidget(cmbWho[static_cast<std::size_t>(kind)], kind, 1);
  }
  const auto add = [grid](AlarmKind kind, const QString& before,
                          std::initializer_list<QWidget*> fields) {
    auto* row = new QHBoxLayout;
    row->addWidget(new QLabel(before));
    for (QWidget* field : fields)
      row->addWidget(field);
    row->addStretch();
    grid->addLayout(row, static_cast<int>(kind), 2);
  };
  add(AlarmKind::LowHitPoints, tr("below"), {spnHitPoints, cmbUnit});
  add(AlarmKind::Silence, tr("after"), {spnSilence});
  grid->setColumnStretch(2, 1);

  auto* circles = new QHBoxLayout;
  for (QPushButton* button : {btnDraw, btnAdd, btnDelete}) {
    button->setAutoDefault(false);
    circles->addWidget(button);
  }
  circles->addStretch();
  auto* ways = new QGridLayout;
  ways->addWidget(chkAlert, 0, 0);
  ways->addWidget(chkNotify, 0, 1);
  ways->addWidget(chkBeep, 1, 0);
  auto* again = new QHBoxLayout;
  auto* label = new QLabel(tr("&Repeat after:"), this);
  label->setBuddy(spnCooldown);
  again->addWidget(label);
  again->addWidget(spnCooldown);
  again->addStretch();
  ways->addLayout(again, 1, 1);
  auto* buttons = new QHBoxLayout;
  buttons->addStretch();
  buttons->addWidget(btnOK);
  buttons->addWidget(btnCancel);
  btnOK->setDefault(true);
  lstCircles->setMinimumHeight(lstCircles->horizontalHeader()->sizeHint().height() +
                               kRowsShown * lstCircles->verticalHeader()->defaultSectionSize());
  auto* column = new QVBoxLayout(this);
  column->addLayout(grid);
  column->addWidget(lstCircles, 1);
  column->addLayout(circles);
  column->addLayout(ways);
  column->addLayout(buttons);
  setTabOrder(cmbWho[0], spnHitPoints);
  setTabOrder(spnHitPoints, cmbUnit);
  setTabOrder(cmbWho[3], spnSilence);
}

void AlarmsDialog::Wire() {
  for (QComboBox* combo : {cmbWho[0], cmbWho[3], cmbUnit})
    connect(combo, &QComboBox::currentIndexChanged, this, [this] { Check(); });
  connect(lstCircles, &QTableWidget::itemSelectionChanged, this, [this] { Check(); });
  connect(new QShortcut(QKeySequence::Delete, lstCircles, nullptr, nullptr, Qt::WidgetShortcut),
          &QShortcut::activated, this, [this] { DeleteCircle(); });
  connect(btnDelete, &QPushButton::clicked, this, [this] { DeleteCircle(); });
  connect(btnAdd, &QPushButton::clicked, this, [this] {
    AddCircle(myProposal);
    lstCircles->setCurrentCell(lstCircles->rowCount() - 1, kCircleName);
    lstCircles->setFocus();
    Check();
  });
  connect(btnDraw, &QPushButton::clicked, this, [this] {
    Confirm();
    if (DrawRequested) DrawRequested();
  });
  connect(btnOK, &QPushButton::clicked, this, [this] { Confirm(); });
  connect(btnCancel, &QPushButton::clicked, this, [this] { reject(); });
}

void AlarmsDialog::AddCircle(const AlarmCircle& circle) const {
  const int row = lstCircles->rowCount();
  lstCircles->insertRow(row);
  const QVariant values[] = {circle.name, circle.facet, circle.centre.x(), circle.centre.y(),
                             circle.radius};
  for (int column = 0; column < kCircleColumns; ++column) {
    auto* cell = new QTableWidgetItem;
    cell->setData(Qt::EditRole, values[column]);
    lstCircles->setItem(row, column, cell);
  }
}

void AlarmsDialog::DeleteCircle() {
  lstCircles->removeRow(lstCircles->currentRow());
  Check();
}

void AlarmsDialog::Check() {
  const auto isOn = [this](AlarmKind kind) {
    return cmbWho[static_cast<std::size_t>(kind)]->currentIndex() > 0;
  };
  spnHitPoints->setMaximum(cmbUnit->currentIndex() == 0 ? 100 : std::numeric_limits<int>::max());
  spnHitPoints->setEnabled(isOn(AlarmKind::LowHitPoints));
  cmbUnit->setEnabled(isOn(AlarmKind::LowHitPoints));
  spnSilence->setEnabled(isOn(AlarmKind::Silence));
  const bool hasRoom = lstCircles->rowCount() < AlarmRules::kMaxCircles;
  btnDraw->setEnabled(hasRoom);
  btnAdd->setEnabled(hasRoom);
  btnDelete->setEnabled(lstCircles->currentRow() >= 0);
}

AlarmRules AlarmsDialog::Entered() const {
  AlarmRules rules;
  for (std::size_t kind = 0; kind < kAlarmKinds; ++kind)
    rules.who[kind] = static_cast<AlarmFor>(cmbWho[kind]->currentIndex());
  rules.isShare = cmbUnit->currentIndex() == 0;
  rules.hitPoints = spnHitPoints->value();
  rules.silence = spnSilence->value();
  rules.cooldown = spnCooldown->value();
  rules.alertsWindow = chkAlert->isChecked();
  rules.notifies = chkNotify->isChecked();
  rules.beeps = chkBeep->isChecked();
  for (int row = 0; row < lstCircles->rowCount(); ++row) {
    const auto number = [this, row](int column) {
      return lstCircles->item(row, column)->data(Qt::EditRole).toInt();
    };
    AlarmCircle circle;
    circle.name = lstCircles->item(row, kCircleName)->text().left(AlarmCircle::kMaxName);
    circle.facet = number(kCircleFacet);
    circle.centre = {number(kCircleX), number(kCircleY)};
    circle.radius = std::max(1, number(kCircleRadius));
    rules.circles.append(circle);
  }
  return rules;
}

void AlarmsDialog::Confirm() {
  if (Confirmed) Confirmed(Entered());
  accept();
}

}  // namespace corvane::map
