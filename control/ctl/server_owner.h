#pragma once

#include <QLocalSocket>

namespace corvane::ctl {

// Whether the server at the other end belongs to this user, so that it is safe to send it
// passwords. On Linux the folder of the socket's file guarantees that; on Windows anybody can
// create a pipe of that name.
bool IsServerOfThisUser(const QLocalSocket& socket);

}  // namespace corvane::ctl
