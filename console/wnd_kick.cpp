#include "console/wnd_kick.h"

#include <utility>

#include "app/operator.h"

namespace corvane {

wndKick::wndKick(Operator& actions, std::shared_ptr<ClientSocket> user, QWidget& owner)
    : ReasonDialog(QStringLiteral("wndKick"), QStringLiteral("Kick User"), std::move(user), owner),
      myActions(actions) {
  btnOK->setDefault(true);
}

void wndKick::Act(const std::string& reason) {
  myActions.Kick(*currUser, reason);
}

}  // namespace corvane
