#pragma once

#include <functional>
#include <memory>
#include <string>

#include <QLineEdit>

#include "console/dialog.h"
#include "server/client_socket.h"

namespace corvane {

// The form of the dialogs that act on a user and need a reason. Shares ownership of the user's
// session, which may end while the dialog is open; messages to it are then dropped.
class ReasonDialog : public Dialog {
 public:
  // Called when OK is pressed and the reason is not empty, before the dialog closes.
  using Act = std::function<void(ClientSocket& user, const std::string& reason)>;

  // The window's title is `title`, followed by the user's name in brackets.
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
