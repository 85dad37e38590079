#pragma once

#include "console/network_dialog.h"
#include "server/server_networks.h"

namespace corvane {

class Operator;

// The dialog that changes a network's password, number of users and whether it is enabled. Ignores
// changes of the name, which is the record's key.
class wndEditNetwork : public NetworkDialog {
 public:
  wndEditNetwork(Operator& op, NetworkRef network, QWidget& owner);

 private:
  void btnOK_Action();

  Operator& myOperator;
  NetworkRef myNetwork;
};

}  // namespace corvane
