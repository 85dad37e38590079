#pragma once

#include <QLocalSocket>

namespace corvane::ctl {

// Whether the server at the other end belongs to this user, so that it is safe to send it
// passwords. The folder that holds a socket's file guarantees that; the name of a pipe can be
// anybody's.
bool IsServerOfThisUser(const QLocalSocket& socket);

}  // namespace corvane::ctl
