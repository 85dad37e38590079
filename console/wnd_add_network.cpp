#include "console/wnd_add_network.h"

#include <tuple>

#include "app/operator.h"
#include "framework/text.h"

namespace corvane {

wndAddNetwork::wndAddNetwork(Operator& op, QWidget& owner)
    : NetworkDialog(QStringLiteral("wndAddNetwork"), QStringLiteral("Add Network"), owner),
      myOperator(op) {
  connect(btnOK, &QPushButton::clicked, this, &wndAddNetwork::btnOK_Action);
}

void wndAddNetwork::btnOK_Action() {
  // The window shows no error if it was not stored: deliberate.
  std::ignore =
      myOperator.AddNetwork(TextFromDisplay(txtName->text()), TextFromDisplay(txtPass->text()),
                            MaxUsers(), chkEnable->isChecked());
  accept();
}

}  // namespace corvane
