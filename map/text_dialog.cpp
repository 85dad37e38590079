#include "map/text_dialog.h"

#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
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

  auto* text = new QLabel(hint, this);
  text->setTextFormat(Qt::PlainText);
  text->setWordWrap(true);
  auto* form = new QFormLayout;
  form->addRow(label, txtText);
  auto* buttons = new QHBoxLayout;
  buttons->addStretch();
  buttons->addWidget(btnOK);
  buttons->addWidget(btnCancel);
  auto* column = new QVBoxLayout(this);
  column->addWidget(text);
  column->addLayout(form);
  column->addLayout(buttons);

  connect(txtText, &QLineEdit::textChanged, this,
          [this](const QString& typed) { btnOK->setEnabled(!typed.isEmpty()); });
  connect(btnOK, &QPushButton::clicked, this, [this] {
    if (Confirmed) Confirmed(txtText->text());
    accept();
  });
  connect(btnCancel, &QPushButton::clicked, this, [this] { reject(); });
}

}  // namespace corvane::map
