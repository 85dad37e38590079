#pragma once

#include <QByteArray>
#include <QJsonObject>

#include "control/ctl/command_table.h"

namespace corvane::ctl {

// Prints answers to standard output and refusals to standard error. Remembers the first error of
// standard output.
class Printer {
 public:
  // Prints an answer for people: as a table, as lines, or the reason of a refusal.
  void Print(const Command& command, const QJsonObject& answer);

  // Prints an answer for programs: the line as received, with characters that could mislead a
  // terminal escaped as JSON does.
  void PrintJson(const QByteArray& received);

  // Prints a text unchanged.
  void PrintText(const QByteArray& text);

  // Prints a line, escaped.
  void PrintLine(const QString& line);

  // The error of standard output, an errno; 0 if it took everything.
  int Error() const { return myError; }

 private:
  int myError = 0;
};

}  // namespace corvane::ctl
