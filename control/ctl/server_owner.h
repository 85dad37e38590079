#pragma once

#include <QLocalSocket>

namespace corvane::ctl {

// Whether the server at the other end is this user's, who may tell it passwords. Where the socket
// lies in a folder the folder answers that; elsewhere anybody may have taken its name.
bool IsServerOfThisUser(const QLocalSocket& socket);

}  // namespace corvane::ctl
