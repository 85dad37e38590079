#pragma once

#include <QByteArray>
#include <QJsonObject>

#include "control/ctl/command_table.h"

namespace corvane::ctl {

// Shows a person what the server answered: tables, lines, or on standard error why not.
void Print(const Command& command, const QJsonObject& answer);

// A line as it is.
void PrintLine(const QByteArray& line);

}  // namespace corvane::ctl
