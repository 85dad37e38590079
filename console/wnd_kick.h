#pragma once

#include "console/reason_dialog.h"

namespace corvane {

class Operator;

// The dialog that sends a user the kick notice, at which clients disconnect. Leaves the connection
// open itself.
class wndKick : public ReasonDialog {
 public:
  wndKick(Operator& op, std::shared_ptr<ClientSocket> user, QWidget& owner);
};

}  // namespace corvane
