#include "console/wnd_ban.h"

#include <utility>

#include "server/map_socket.h"
#include "server/wire.h"

namespace corvane {

wndBan::wndBan(std::shared_ptr<ClientSocket> user, QWidget& owner)
    : ReasonDialog(QStringLiteral("wndBan"), QStringLiteral("Ban User"), std::move(user), owner) {}

void wndBan::Act(const std::string& reason) {
  MapSocket& listener = currUser->myParent;
  currUser->SendMessage(wire::kBan, reason);
  listener.CallStatusMessage(currUser->Username() + " Banned: " + reason);
  listener.Bans().Add(currUser->RemoteAddress(), "Server Admin", reason, currUser->NetworkName());
}

}  // namespace corvane
