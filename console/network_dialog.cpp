#include "console/network_dialog.h"

#include <algorithm>

#include <QFormLayout>
#include <QVBoxLayout>

#include "framework/numbers.h"
#include "framework/text.h"

namespace corvane {
namespace {

constexpr std::int32_t kMinUsers = 1;
constexpr std::int32_t kMaxUsers = 1000;
constexpr int kNameFieldWidth = 220;
constexpr int kMaxDigits = 4;

}  // namespace

NetworkDialog::NetworkDialog(const QString& name, const QString& title, QWidget& owner)
    : Dialog(name, title, owner) {
  chkEnable = new QCheckBox(QStringLiteral("Enabled"), this);
  txtName = new QLineEdit(this);
  txtUsers = new QLineEdit(QStringLiteral("5"), this);
  UpDownArrows1 = new UpDownArrows(*txtUsers, this);
  txtPass = new QLineEdit(this);
  btnOK = new QPushButton(QStringLiteral("OK"), this);
  btnCancel = new QPushButton(QStringLiteral("Cancel"), this);
  txtName->setMinimumWidth(kNameFieldWidth);
  FitDigits(*txtUsers, kMaxDigits);

  auto* form = new QFormLayout;
  form->addRow(QString(), chkEnable);
  form->addRow(QStringLiteral("Name:"), txtName);
  form->addRow(QStringLiteral("Max Users:"), FieldWithArrows(txtUsers, UpDownArrows1));
  txtUsers->setAccessibleName(QStringLiteral("Max Users"));
  form->addRow(QStringLiteral("Password:"), txtPass);
  auto* column = new QVBoxLayout(this);
  column->addLayout(form);
  column->addLayout(ButtonRow({btnOK, btnCancel}));
  column->setSizeConstraint(QLayout::SetFixedSize);

  connect(txtUsers, &QLineEdit::textChanged, this, &NetworkDialog::txtUsers_TextChange);
  connect(btnCancel, &QPushButton::clicked, this, &QDialog::reject);
  UpDownArrows1->Up = [this] { txtUsers->setText(QString::number(MaxUsers() + 1)); };
  UpDownArrows1->Down = [this] { txtUsers->setText(QString::number(MaxUsers() - 1)); };
}

std::int32_t NetworkDialog::MaxUsers() const {
  return Int32FromText(TextFromDisplay(txtUsers->text()));
}

void NetworkDialog::txtUsers_TextChange() {
  const std::int32_t typed = MaxUsers();
  const std::int32_t allowed = std::clamp(typed, kMinUsers, kMaxUsers);
  if (allowed == typed) return;
  txtUsers->setText(QString::number(allowed));
  // So that typing replaces it.
  txtUsers->selectAll();
}

}  // namespace corvane
