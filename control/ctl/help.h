#pragma once

#include <vector>

#include <QString>
#include <QStringList>

#include "control/ctl/command_table.h"

namespace corvane::ctl {

// "corvanectl kick [OPTION...] USER REASON..."
QString UsageOf(const Command& command);
QString HelpOf(const Command& command);

// The commands that begin with these words, all if there are none.
std::vector<const Command*> CommandsBelow(const QStringList& words);
QString ListOf(const std::vector<const Command*>& commands);
// What corvanectl is, its commands, options and exit codes.
QString Overview();

}  // namespace corvane::ctl
