#include "console/wnd_edit_network.h"

#include <utility>

#include "app/operator.h"
#include "framework/text.h"

namespace corvane {

wndEditNetwork::wndEditNetwork(Operator& op, NetworkRef network, QWidget& owner)
    : NetworkDialog(QStringLiteral("wndEditNetwork"), QStringLiteral("Edit Network"), owner),
      myOperator(op),
      myNetwork(std::move(network)) {
  chkEnable->setChecked(myNetwork->Enabled);
  txtName->setText(DisplayText(myNetwork->NetworkName));
  txtPass->setText(DisplayText(myNetwork->Password));
  txtUsers->setText(QString::number(myNetwork->MaxUsers));
  connect(btnOK, &QPushButton::clicked, this, &wndEditNetwork::btnOK_Action);
}

void wndEditNetwork::btnOK_Action() {
  // An unedited password keeps its bytes, even if the field cannot represent them.
  const std::string password =
      txtPass->isModified() ? TextFromDisplay(txtPass->text()) : myNetwork->Password;
  if (!myOperator.ChangeNetwork(*myNetwork, password, MaxUsers(), chkEnable->isChecked())) {
    myOperator.ShowMessage({MessageBox::Kind::Message, {}, myOperator.StoreError()});
  }
  accept();
}

}  // namespace corvane
