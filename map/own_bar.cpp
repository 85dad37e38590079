#include "map/own_bar.h"

#include <limits>

#include <QLabel>

namespace corvane::map {

OwnBar::OwnBar(OwnPosition& position, QWidget* parent)
    : QToolBar(parent),
      chkSend(new QCheckBox(tr("&Send my position"), this)),
      spnHp(new QSpinBox(this)),
      chkBattle(new QCheckBox(tr("In &battle"), this)),
      chkDead(new QCheckBox(tr("&Dead"), this)),
      myPosition(position) {
  setObjectName(QStringLiteral("OwnBar"));
  setWindowTitle(tr("My Position"));
  chkSend->setToolTip(tr("Click on the map to go there, or use the arrow keys"));
  spnHp->setRange(0, std::numeric_limits<int>::max());
  spnHp->setValue(100);
  spnHp->setAccessibleName(tr("My hit points"));
  auto* label = new QLabel(tr("&HP:"), this);
  label->setBuddy(spnHp);
  label->setContentsMargins(8, 0, 4, 0);
  addWidget(chkSend);
  addWidget(label);
  for (QWidget* field : std::initializer_list<QWidget*>{spnHp, chkBattle, chkDead}) {
    addWidget(field);
    field->setEnabled(false);
    // Not all styles leave space between them.
    auto* gap = new QWidget(this);
    gap->setFixedWidth(6);
    addWidget(gap);
  }
  connect(chkSend, &QCheckBox::toggled, this, [this](bool isOn) {
    for (QWidget* field : std::initializer_list<QWidget*>{spnHp, chkBattle, chkDead})
      field->setEnabled(isOn);
    myPosition.SetOn(isOn);
  });
  connect(spnHp, &QSpinBox::valueChanged, this, [this] { Take(); });
  for (QCheckBox* flag : {chkBattle, chkDead})
    connect(flag, &QCheckBox::toggled, this, [this] { Take(); });
}

void OwnBar::Take() {
  myPosition.SetState(spnHp->value(), chkBattle->isChecked(), chkDead->isChecked());
}

}  // namespace corvane::map
