#pragma once

#include "console/reason_dialog.h"

namespace corvane {

// The dialog that sends a user the kick notice. The connection stays.
class wndKick : public ReasonDialog {
 public:
  wndKick(std::shared_ptr<ClientSocket> user, QWidget& owner);

 protected:
  void Act(const std::string& reason) override;
};

}  // namespace corvane
