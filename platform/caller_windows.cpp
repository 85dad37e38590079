#include <cstdio>
#include <windows.h>

#include <QCoreApplication>

#include "platform/caller.h"

namespace corvane {
namespace {

// Whether the program was linked for the console, which then has its answer, also if nobody is
// there to close a message box.
bool IsConsoleProgram() {
  const auto* image = reinterpret_cast<const char*>(GetModuleHandleW(nullptr));
  const auto* dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(image);
  const auto* headers = reinterpret_cast<const IMAGE_NT_HEADERS*>(image + dos->e_lfanew);
  return headers->OptionalHeader.Subsystem == IMAGE_SUBSYSTEM_WINDOWS_CUI;
}

}  // namespace

void AnswerOnConsole(const CallerAnswer& answer) {
  const QString name = QCoreApplication::applicationName();
  if (!IsConsoleProgram()) {
    MessageBoxW(nullptr, answer.text.toStdWString().c_str(), name.toStdWString().c_str(),
                answer.exitCode == 0 ? MB_ICONINFORMATION : MB_ICONWARNING);
  } else if (answer.exitCode == 0) {
    std::printf("%s\n", qUtf8Printable(answer.text));
  } else {
    std::fprintf(stderr, "%s: %s\n", qUtf8Printable(name), qUtf8Printable(answer.text));
  }
}

}  // namespace corvane
