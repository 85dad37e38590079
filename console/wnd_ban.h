#pragma once

#include "console/reason_dialog.h"

namespace corvane {

class Operator;

// The dialog that bans a user's address and sends the ban notice, at which clients disconnect.
// Leaves the connection open itself.
class wndBan : public ReasonDialog {
 public:
  wndBan(Operator& op, std::shared_ptr<ClientSocket> user, QWidget& owner);
};

}  // namespace corvane
