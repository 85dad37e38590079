#include "console/wnd_add_network.h"

#include <memory>
#include <tuple>

#include "console/networks_model.h"
#include "framework/text.h"
#include "server/map_socket.h"
#include "storage/networks_table.h"

namespace corvane {

wndAddNetwork::wndAddNetwork(MapSocket& listener, NetworksModel& list, DatabaseConnection& serverdb,
                             QWidget& owner)
    : NetworkDialog(QStringLiteral("wndAddNetwork"), QStringLiteral("Add Network"), owner),
      myListener(listener),
      myList(list),
      myDatabase(serverdb) {
  connect(btnOK, &QPushButton::clicked, this, &wndAddNetwork::btnOK_Action);
}

void wndAddNetwork::btnOK_Action() {
  const auto network = std::make_shared<ServerNetworks>(TextFromDisplay(txtName->text()),
                                                        TextFromDisplay(txtPass->text()),
                                                        MaxUsers(), chkEnable->isChecked());
  myListener.Networks.push_back(network);
  myList.Add(network);
  // The window stays silent where it did not work.
  std::ignore =
      NetworksTable(myDatabase)
          .Add(network->NetworkName, network->Password, network->MaxUsers, network->Enabled);
  accept();
}

}  // namespace corvane
