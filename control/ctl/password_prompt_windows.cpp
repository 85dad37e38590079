#include <cstdio>
#include <windows.h>

#include <QTextStream>

#include "control/ctl/password_prompt.h"

namespace corvane::ctl {

std::optional<QString> AskPassword() {
  const HANDLE input = GetStdHandle(STD_INPUT_HANDLE);
  DWORD before = 0;
  const bool isTerminal = GetConsoleMode(input, &before) != 0;
  if (isTerminal) {
    SetConsoleMode(input, before & ~static_cast<DWORD>(ENABLE_ECHO_INPUT));
    std::fputs("Password: ", stderr);
  }
  const QString line = QTextStream(stdin).readLine();
  if (isTerminal) {
    SetConsoleMode(input, before);
    std::fputs("\n", stderr);
  }
  return line.isNull() ? std::nullopt : std::optional(line);
}

}  // namespace corvane::ctl
