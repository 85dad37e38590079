#pragma once

#include <optional>

#include <QString>

namespace corvane::ctl {

// Asks whoever sits at the terminal for a password, which is not shown while it is typed. Without
// a terminal reads a line of standard input. None where there is none.
std::optional<QString> AskPassword();

}  // namespace corvane::ctl
