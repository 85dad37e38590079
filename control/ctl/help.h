#pragma once

#include <vector>

#include <QString>
#include <QStringList>

#include "control/ctl/command_table.h"

namespace corvane::ctl {

// "corvanectl kick [OPTION...] USER REASON..."
QString UsageOf(const Command& command);
QString HelpOf(const Command& command);

// The commands that begin with these words; all commands for no words.
std::vector<const Command*> CommandsBelow(const QStringList& words);
QString ListOf(const std::vector<const Command*>& commands);
// The text of `corvanectl --help`.
QString Overview();

}  // namespace corvane::ctl
