#pragma once

#include <optional>

#include <QString>

namespace corvane::ctl {

// Asks for a password at the terminal, without echo; without a terminal reads a line from standard
// input. None if there is no line.
std::optional<QString> AskPassword();

}  // namespace corvane::ctl
