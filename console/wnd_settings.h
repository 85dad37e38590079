#pragma once

#include <vector>

#include <QComboBox>
#include <QLineEdit>

#include "console/dialog.h"
#include "console/up_down_arrows.h"
#include "platform/network_interfaces.h"

namespace corvane {

class Operator;

// The dialog for the listening interface, the port and the number of connections. Each change of
// the port field is limited to 65535. The values take effect at the next start of the server.
class wndSettings : public Dialog {
 public:
  // `interfaces` are those of the machine, in the system's order.
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
  // The first error in the values; empty if there is none.
  std::string Fault() const;

  Operator& myOperator;
  std::vector<NetworkInterface> myInterfaces;
};

}  // namespace corvane
