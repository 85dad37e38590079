#pragma once

#include <vector>

#include <QComboBox>
#include <QLineEdit>

#include "console/dialog.h"
#include "console/up_down_arrows.h"
#include "platform/network_interfaces.h"

namespace corvane {

class Operator;

// The dialog for the listening interface, the port and the number of connections. The port is kept
// to 65535 at every change of its field. What the dialog stores is used by the next start of the
// server.
class wndSettings : public Dialog {
 public:
  // `interfaces` are the machine's, in the system's order.
  wndSettings(Operator& op, std::vector<NetworkInterface> interfaces, QWidget& owner);

  // The controls, in tab order. The dialog owns them.
  QComboBox* pmNIC;
  QLineEdit* fldConns;
  UpDownArrows* udConns;
  QLineEdit* fldPort;
  QPushButton* btnOK;
  QPushButton* btnCancel;

 private:
  void LayOut();
  void SelectInterface(const std::string& macAddress);
  void fldPort_TextChange() const;
  void udConns_Up() const;
  void udConns_Down() const;
  void btnOK_Action();
  // What is wrong with the values; empty when nothing is.
  std::string Fault() const;

  Operator& myOperator;
  std::vector<NetworkInterface> myInterfaces;
};

}  // namespace corvane
