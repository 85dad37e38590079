#pragma once

#include <functional>
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
  // Acts on the user with a reason that is not empty, before the dialog closes.
  using Act = std::function<void(ClientSocket& user, const std::string& reason)>;

  // The title is `title` with the user's name behind it in brackets.
  ReasonDialog(const QString& name, const QString& title, std::shared_ptr<ClientSocket> user,
               Act act, QWidget& owner);

  // The controls, in tab order. The dialog owns them.
  QLineEdit* txtReason;
  QPushButton* btnOK;
  QPushButton* btnCancel;

 private:
  void btnOK_Action();

  std::shared_ptr<ClientSocket> currUser;
  Act myAct;
};

}  // namespace corvane
