#include <cstdio>
#include <termios.h>
#include <unistd.h>

#include <QTextStream>

#include "control/ctl/password_prompt.h"

namespace corvane::ctl {

std::optional<QString> AskPassword() {
  termios before{};
  const bool isTerminal = tcgetattr(STDIN_FILENO, &before) == 0;
  if (isTerminal) {
    termios silent = before;
    silent.c_lflag &= ~static_cast<tcflag_t>(ECHO);
    tcsetattr(STDIN_FILENO, TCSAFLUSH, &silent);
    std::fputs("Password: ", stderr);
  }
  const QString line = QTextStream(stdin).readLine();
  if (isTerminal) {
    tcsetattr(STDIN_FILENO, TCSAFLUSH, &before);
    std::fputs("\n", stderr);
  }
  return line.isNull() ? std::nullopt : std::optional(line);
}

}  // namespace corvane::ctl
