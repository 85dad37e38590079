#pragma once

#include "console/network_dialog.h"
#include "server/server_networks.h"

namespace corvane {

class Operator;

// The dialog that changes a network's password, number of users and enabling, in the listener and
// in the database. The name stays whatever is typed: it is the record's key.
class wndEditNetwork : public NetworkDialog {
 public:
  wndEditNetwork(Operator& op, NetworkRef network, QWidget& owner);

 private:
  void btnOK_Action();

  Operator& myOperator;
  NetworkRef myNetwork;
};

}  // namespace corvane
