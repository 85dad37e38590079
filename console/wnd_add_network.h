#pragma once

#include "console/network_dialog.h"

namespace corvane {

class Operator;

// The dialog that adds a network. A name may be empty or in use already.
class wndAddNetwork : public NetworkDialog {
 public:
  wndAddNetwork(Operator& op, QWidget& owner);

 private:
  void btnOK_Action();

  Operator& myOperator;
};

}  // namespace corvane
