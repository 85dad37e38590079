#pragma once

#include <QComboBox>
#include <QPlainTextEdit>

#include "console/dialog.h"

namespace corvane {

class MapSocket;

// The dialog that sends a message to one network or to all. While a client is connected that has
// not chosen a network, sending throws NilObjectException, as MapSocket::BroadcastMessage does.
class wndMessage : public Dialog {
 public:
  wndMessage(MapSocket& listener, QWidget& owner);

  // The controls, in tab order. The dialog owns them.
  QComboBox* pmNetwork;
  QPlainTextEdit* fldText;
  QPushButton* btnSend;

 private:
  void btnSend_Action();

  MapSocket& myListener;
};

}  // namespace corvane
