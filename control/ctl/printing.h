#pragma once

#include <QByteArray>
#include <QJsonObject>

#include "control/ctl/command_table.h"

namespace corvane::ctl {

// Writes to standard output, and refusals to standard error.
class Printer {
 public:
  // Shows a person what the server answered: tables, lines, or why not.
  void Print(const Command& command, const QJsonObject& answer);

  // The same for a program: the line that was received, with what misleads escaped as JSON does.
  void PrintJson(const QByteArray& received);

  // A text as it is.
  void PrintText(const QByteArray& text);

  // Why standard output did not take all that was printed, as errno has it; 0 if it did.
  int Error() const { return myError; }

 private:
  int myError = 0;
};

}  // namespace corvane::ctl
