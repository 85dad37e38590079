#pragma once

#include <memory>
#include <string>

#include <QLineEdit>

#include "console/dialog.h"
#include "server/client_socket.h"

namespace corvane {

// The form of the dialogs that act on a user with a reason. It holds the user's session, which may
// end meanwhile: what is sent to it then goes nowhere.
class ReasonDialog : public Dialog {
 public:
  // The title is `title` with the user's name behind it in brackets.
  ReasonDialog(const QString& name, const QString& title, std::shared_ptr<ClientSocket> user,
               QWidget& owner);

  // The controls, in tab order. The dialog owns them.
  QLineEdit* txtReason;
  QPushButton* btnOK;
  QPushButton* btnCancel;

 protected:
  // Acts on currUser; called with a reason that is not empty, before the dialog closes.
  virtual void Act(const std::string& reason) = 0;

  std::shared_ptr<ClientSocket> currUser;

 private:
  void btnOK_Action();
};

}  // namespace corvane
