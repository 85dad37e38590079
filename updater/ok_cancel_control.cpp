#include "updater/ok_cancel_control.h"

#include <QHBoxLayout>
#include <QShortcut>

namespace corvane {

OKCancelControl::OKCancelControl(QWidget* parent) : QWidget(parent) {
  LeftButton = new QPushButton(QStringLiteral("&OK"), this);
  RightButton = new QPushButton(QStringLiteral("&Cancel"), this);
  LeftButton->setDefault(true);
  // The button's own shortcut would be lost with its next caption.
  auto* escape = new QShortcut(Qt::Key_Escape, this);

  auto* row = new QHBoxLayout(this);
  row->setContentsMargins({});
  row->addStretch();
  row->addWidget(LeftButton);
  row->addWidget(RightButton);
  connect(LeftButton, &QPushButton::clicked, this, &OKCancelControl::LeftButton_Action);
  connect(RightButton, &QPushButton::clicked, this, &OKCancelControl::RightButton_Action);
  connect(escape, &QShortcut::activated, RightButton, &QPushButton::click);
}

void OKCancelControl::LeftButton_Action() const {
  if (OKAction) OKAction();
}

void OKCancelControl::RightButton_Action() const {
  if (CancelAction) CancelAction();
}

}  // namespace corvane
