#pragma once

#include "console/reason_dialog.h"

namespace corvane {

class Operator;

// The dialog that sends a user the ban notice and stores a ban of its address. The connection
// stays.
class wndBan : public ReasonDialog {
 public:
  wndBan(Operator& actions, std::shared_ptr<ClientSocket> user, QWidget& owner);

 protected:
  void Act(const std::string& reason) override;

 private:
  Operator& myActions;
};

}  // namespace corvane
