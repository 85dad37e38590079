#include "console/wnd_ban.h"

#include <utility>

#include "server/map_socket.h"
#include "server/wire.h"

namespace corvane {

wndBan::wndBan(std::shared_ptr<ClientSocket> user, QWidget& owner)
    : ReasonDialog(QStringLiteral("wndBan"), QStringLiteral("Ban User"), std::move(user), owner) {}

void wndBan::Act(const std::string& reason) {
  MapSocket& listener = currUser->myParent;
  // First, since what is sent may leave at once: nobody hears of a ban that is not stored.
  listener.Keeper().Add(currUser->RemoteAddress(), "Server Admin", reason, currUser->NetworkName());
  currUser->SendMessage(wire::kBan, reason);
  listener.CallStatusMessage(currUser->Username() + " Banned: " + reason);
}

}  // namespace corvane
