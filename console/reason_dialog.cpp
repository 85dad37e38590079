#include "console/reason_dialog.h"

#include <utility>

#include <QVBoxLayout>

#include "framework/text.h"
#include "framework/visible_text.h"

namespace corvane {
namespace {

constexpr int kReasonFieldWidth = 320;

}  // namespace

ReasonDialog::ReasonDialog(const QString& name, const QString& title,
                           std::shared_ptr<ClientSocket> user, Act act, QWidget& owner)
    : Dialog(name, title + " [" + VisibleText(user->Username()) + "]", owner),
      currUser(std::move(user)),
      myAct(std::move(act)) {
  txtReason = new QLineEdit(this);
  btnOK = new QPushButton(QStringLiteral("OK"), this);
  btnCancel = new QPushButton(QStringLiteral("Cancel"), this);
  txtReason->setMinimumWidth(kReasonFieldWidth);
  txtReason->setPlaceholderText(QStringLiteral("Reason"));
  txtReason->setAccessibleName(QStringLiteral("Reason"));

  auto* column = new QVBoxLayout(this);
  column->addWidget(txtReason);
  column->addLayout(ButtonRow({btnOK, btnCancel}));
  column->setSizeConstraint(QLayout::SetFixedSize);
  connect(btnOK, &QPushButton::clicked, this, &ReasonDialog::btnOK_Action);
  connect(btnCancel, &QPushButton::clicked, this, &QDialog::reject);
}

void ReasonDialog::btnOK_Action() {
  const std::string reason = TextFromDisplay(txtReason->text());
  if (reason.empty()) return;
  myAct(*currUser, reason);
  accept();
}

}  // namespace corvane
