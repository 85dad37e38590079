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

}  // namespace corvane::ctl
