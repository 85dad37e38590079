#include "console/wnd_kick.h"

#include <utility>

#include "app/operator.h"

namespace corvane {

wndKick::wndKick(Operator& op, std::shared_ptr<ClientSocket> user, QWidget& owner)
    : ReasonDialog(
          QStringLiteral("wndKick"), QStringLiteral("Kick User"), std::move(user),
          [&op](ClientSocket& who, const std::string& reason) { op.Kick(who, reason); }, owner) {
  btnOK->setDefault(true);
}

}  // namespace corvane
