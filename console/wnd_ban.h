#pragma once

#include "console/reason_dialog.h"

namespace corvane {

class Operator;

// The dialog that sends a user the ban notice and bans the address. It does not close the
// connection.
class wndBan : public ReasonDialog {
 public:
  wndBan(Operator& op, std::shared_ptr<ClientSocket> user, QWidget& owner);
};

}  // namespace corvane
