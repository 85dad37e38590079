#include "map/own_bar.h"

#include <limits>

#include <QHBoxLayout>
#include <QLabel>

namespace corvane::map {

OwnBar::OwnBar(OwnPosition& position, QWidget* parent)
    : QWidget(parent),
      chkSend(new QCheckBox(tr("&Send my position"), this)),
      spnHp(new QSpinBox(this)),
      chkBattle(new QCheckBox(tr("In &battle"), this)),
      chkDead(new QCheckBox(tr("&Dead"), this)),
      myPosition(position) {
  setObjectName(QStringLiteral("OwnBar"));
  chkSend->setToolTip(tr("Click on the map to go there, or use the arrow keys"));
  spnHp->setRange(0, std::numeric_limits<int>::max());
  spnHp->setValue(100);
  spnHp->setMaximumWidth(fontMetrics().horizontalAdvance('0') * 9);
  spnHp->setAccessibleName(tr("My hit points"));
  auto* label = new QLabel(tr("H&P:"), this);
  label->setBuddy(spnHp);
  auto* row = new QHBoxLayout(this);
  row->setContentsMargins({});
  row->addWidget(chkSend);
  for (QWidget* field : std::initializer_list<QWidget*>{label, spnHp, chkBattle, chkDead}) {
    row->addWidget(field);
    field->hide();
    connect(chkSend, &QCheckBox::toggled, field, &QWidget::setVisible);
  }
  connect(chkSend, &QCheckBox::toggled, this, [this](bool isOn) { myPosition.SetOn(isOn); });
  connect(spnHp, &QSpinBox::valueChanged, this, [this] { Take(); });
  for (QCheckBox* flag : {chkBattle, chkDead})
    connect(flag, &QCheckBox::toggled, this, [this] { Take(); });
}

void OwnBar::Take() {
  myPosition.SetState(spnHp->value(), chkBattle->isChecked(), chkDead->isChecked());
}

}  // namespace corvane::map
