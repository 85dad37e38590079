#include "console/wnd_edit_network.h"

#include <utility>

#include "framework/text.h"
#include "server/app.h"
#include "storage/networks_table.h"

namespace corvane {

wndEditNetwork::wndEditNetwork(App& app, NetworkRef network, QWidget& owner)
    : NetworkDialog(QStringLiteral("wndEditNetwork"), QStringLiteral("Edit Network"), owner),
      myApp(app),
      myNetwork(std::move(network)) {
  chkEnable->setChecked(myNetwork->Enabled);
  txtName->setText(DisplayText(myNetwork->NetworkName));
  txtPass->setText(DisplayText(myNetwork->Password));
  txtUsers->setText(QString::number(myNetwork->MaxUsers));
  connect(btnOK, &QPushButton::clicked, this, &wndEditNetwork::btnOK_Action);
}

void wndEditNetwork::btnOK_Action() {
  myNetwork->Enabled = chkEnable->isChecked();
  myNetwork->MaxUsers = MaxUsers();
  // A password that a field cannot hold is kept as it is unless another one was typed.
  if (txtPass->isModified()) myNetwork->Password = TextFromDisplay(txtPass->text());
  DatabaseConnection& serverdb = myApp.serverdb();
  if (!NetworksTable(serverdb).Change(myNetwork->NetworkName, myNetwork->Password,
                                      myNetwork->MaxUsers, myNetwork->Enabled)) {
    MessageBox box;
    box.text = serverdb.ErrorMessage();
    myApp.ShowMessage(box);
  }
  accept();
}

}  // namespace corvane
