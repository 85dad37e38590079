#pragma once

#include <QByteArray>
#include <QJsonObject>

#include "control/ctl/command_table.h"

namespace corvane::ctl {

// Shows a person what the server answered: tables, lines, or on standard error why not.
void Print(const Command& command, const QJsonObject& answer);

// The same for a program: the line that was received, with what misleads escaped as JSON does.
void PrintJson(const QByteArray& received);

// A line as it is.
void PrintLine(const QByteArray& line);
// The same without an end of line.
void PrintText(const QByteArray& text);

// Why standard output did not take all that was printed, as errno has it; 0 if it did.
int PrintingError();

}  // namespace corvane::ctl
