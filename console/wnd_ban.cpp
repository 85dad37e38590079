#include "console/wnd_ban.h"

#include <utility>

#include "app/operator.h"

namespace corvane {

wndBan::wndBan(Operator& actions, std::shared_ptr<ClientSocket> user, QWidget& owner)
    : ReasonDialog(QStringLiteral("wndBan"), QStringLiteral("Ban User"), std::move(user), owner),
      myActions(actions) {}

void wndBan::Act(const std::string& reason) {
  myActions.Ban(*currUser, reason);
}

}  // namespace corvane
