#include "map/text_dialog.h"

#include <algorithm>

#include <QFormLayout>
#include <QHBoxLayout>
#include <QVBoxLayout>

namespace corvane::map {
namespace {

constexpr int kWidth = 380;
// A server may refuse longer messages.
constexpr int kMaxLength = 1000;

}  // namespace

TextDialog::TextDialog(const QString& title, const QString& hint, const QString& label,
                       const QString& action, QWidget& owner)
    : QDialog(&owner),
      lblHint(new QLabel(hint, this)),
      txtText(new QLineEdit(this)),
      btnOK(new QPushButton(action, this)),
      btnCancel(new QPushButton(tr("Cancel"), this)) {
  setObjectName(QStringLiteral("TextDialog"));
  setWindowTitle(title);
  setAttribute(Qt::WA_DeleteOnClose);
  txtText->setMaxLength(kMaxLength);
  txtText->setMinimumWidth(kWidth);
  btnOK->setDefault(true);
  btnOK->setEnabled(false);

  lblHint->setTextFormat(Qt::PlainText);
  lblHint->setWordWrap(true);
  auto* form = new QFormLayout;
  form->addRow(label, txtText);
  auto* buttons = new QHBoxLayout;
  buttons->addStretch();
  buttons->addWidget(btnOK);
  buttons->addWidget(btnCancel);
  auto* column = new QVBoxLayout(this);
  column->addWidget(lblHint);
  column->addLayout(form);
  column->addLayout(buttons);

  connect(txtText, &QLineEdit::textChanged, this,
          [this](const QString& typed) { btnOK->setEnabled(!typed.isEmpty()); });
  connect(btnOK, &QPushButton::clicked, this, [this] {
    const QString fault = FaultOf ? FaultOf(txtText->text()) : QString();
    if (!fault.isEmpty()) {
      lblHint->setText(fault);
      resize(width(), std::max(height(), layout()->totalHeightForWidth(width())));
      txtText->setFocus();
      txtText->selectAll();
      return;
    }
    if (Confirmed) Confirmed(txtText->text());
    accept();
  });
  connect(btnCancel, &QPushButton::clicked, this, [this] { reject(); });
}

}  // namespace corvane::map
