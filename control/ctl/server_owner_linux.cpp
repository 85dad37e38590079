#include "control/ctl/server_owner.h"

namespace corvane::ctl {

bool IsServerOfThisUser(const QLocalSocket&) {
  return true;
}

}  // namespace corvane::ctl
