#pragma once

#include <QLabel>

#include "console/dialog.h"

namespace corvane {

class ClientSocket;

// The box that shows a client's location, as found by the lookup.
class wndConnInfo : public Dialog {
 public:
  wndConnInfo(const ClientSocket& user, QWidget& owner);

  QLabel* lblInfo;
  QPushButton* PushButton1;
};

}  // namespace corvane
