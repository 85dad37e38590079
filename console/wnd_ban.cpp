#include "console/wnd_ban.h"

#include <utility>

#include "app/operator.h"

namespace corvane {

wndBan::wndBan(Operator& op, std::shared_ptr<ClientSocket> user, QWidget& owner)
    : ReasonDialog(
          QStringLiteral("wndBan"), QStringLiteral("Ban User"), std::move(user),
          [&op](ClientSocket& who, const std::string& reason) { op.Ban(who, reason); }, owner) {}

}  // namespace corvane
