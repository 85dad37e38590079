#include <cstdio>
#include <iterator>
#include <windows.h>

#include <QTextStream>

#include "control/ctl/password_prompt.h"

namespace corvane::ctl {
namespace {

// Reads a typed line as Unicode, independent of the console's code page.
std::optional<QString> ReadTyped(HANDLE console) {
  QString line;
  while (!line.endsWith('\n')) {
    wchar_t typed[256];
    DWORD count = 0;
    if (!ReadConsoleW(console, typed, std::size(typed), &count, nullptr)) return std::nullopt;
    if (count == 0) break;  // Ctrl+C
    line += QString::fromWCharArray(typed, static_cast<qsizetype>(count));
  }
  if (line.isEmpty()) return std::nullopt;
  while (line.endsWith('\n') || line.endsWith('\r'))
    line.chop(1);
  return line;
}

}  // namespace

std::optional<QString> AskPassword() {
  const HANDLE input = GetStdHandle(STD_INPUT_HANDLE);
  DWORD before = 0;
  if (!GetConsoleMode(input, &before)) {
    const QString line = QTextStream(stdin).readLine();
    return line.isNull() ? std::nullopt : std::optional(line);
  }
  SetConsoleMode(input, before & ~static_cast<DWORD>(ENABLE_ECHO_INPUT));
  std::fputs("Password: ", stderr);
  std::optional<QString> line = ReadTyped(input);
  SetConsoleMode(input, before);
  std::fputs("\n", stderr);
  return line;
}

}  // namespace corvane::ctl
