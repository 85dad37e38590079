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
  // The window stays silent where it was not stored.
  std::ignore =
      myOperator.AddNetwork(TextFromDisplay(txtName->text()), TextFromDisplay(txtPass->text()),
                            MaxUsers(), chkEnable->isChecked());
  accept();
}

}  // namespace corvane
