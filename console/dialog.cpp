#include "console/dialog.h"

#include <algorithm>

#include <QKeyEvent>

namespace corvane {
namespace {

constexpr int kButtonPadding = 32;  // beside a button's text

}  // namespace

Dialog::Dialog(const QString& name, const QString& title, QWidget& owner) : QDialog(&owner) {
  setObjectName(name);
  setAttribute(Qt::WA_DeleteOnClose);
  setWindowModality(Qt::WindowModal);
  setWindowFlags(Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint |
                 Qt::WindowSystemMenuHint | Qt::WindowCloseButtonHint);
  // Qt replaces "[*]", which a user's name may contain, by a mark for unsaved changes.
  setWindowTitle(QString(title).replace(QStringLiteral("[*]"), QStringLiteral("[*][*]")));
}

void Dialog::open() {
  // Otherwise Qt makes the first button the default.
  for (QPushButton* button : findChildren<QPushButton*>())
    button->setAutoDefault(false);
  focusNextChild();
  QDialog::open();
}

void Dialog::keyPressEvent(QKeyEvent* event) {
  const bool isEnter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
  auto* button = qobject_cast<QPushButton*>(focusWidget());
  if (isEnter && button != nullptr) {
    button->click();
  } else {
    QDialog::keyPressEvent(event);
  }
}

int WidthOfText(const QPushButton& button) {
  return button.fontMetrics().horizontalAdvance(button.text()) + kButtonPadding;
}

QBoxLayout* ButtonRow(std::initializer_list<QPushButton*> buttons) {
  auto* row = new QHBoxLayout;
  row->addStretch();
  for (QPushButton* button : buttons) {
    button->setMinimumWidth(std::max(button->sizeHint().width(), WidthOfText(*button)));
    row->addWidget(button);
  }
  return row;
}

}  // namespace corvane
