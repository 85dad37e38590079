#include <windows.h>

#include <QCoreApplication>

#include "platform/caller.h"

namespace corvane {

void AnswerOnConsole(const CallerAnswer& answer) {
  MessageBoxW(nullptr, answer.text.toStdWString().c_str(),
              QCoreApplication::applicationName().toStdWString().c_str(),
              answer.exitCode == 0 ? MB_ICONINFORMATION : MB_ICONWARNING);
}

}  // namespace corvane
