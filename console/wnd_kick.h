#pragma once

#include "console/reason_dialog.h"

namespace corvane {

class Operator;

// The dialog that sends a user the kick notice. The connection stays.
class wndKick : public ReasonDialog {
 public:
  wndKick(Operator& actions, std::shared_ptr<ClientSocket> user, QWidget& owner);

 protected:
  void Act(const std::string& reason) override;

 private:
  Operator& myActions;
};

}  // namespace corvane
