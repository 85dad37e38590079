#include "console/wnd_kick.h"

#include <utility>

#include "server/map_socket.h"
#include "server/wire.h"

namespace corvane {

wndKick::wndKick(std::shared_ptr<ClientSocket> user, QWidget& owner)
    : ReasonDialog(QStringLiteral("wndKick"), QStringLiteral("Kick User"), std::move(user), owner) {
  btnOK->setDefault(true);
}

void wndKick::Act(const std::string& reason) {
  currUser->SendMessage(wire::kKick, reason);
  currUser->myParent.CallStatusMessage(currUser->Username() + " Kicked: " + reason);
}

}  // namespace corvane
