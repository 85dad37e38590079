#pragma once

#include <QLabel>

#include "console/dialog.h"

namespace corvane {

class ClientSocket;

// The box that shows where a client is, as far as the location lookup found out.
class wndConnInfo : public Dialog {
 public:
  wndConnInfo(const ClientSocket& user, QWidget& owner);

  QLabel* lblInfo;
  QPushButton* PushButton1;
};

}  // namespace corvane
