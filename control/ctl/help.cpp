#include "control/ctl/help.h"

#include <algorithm>
#include <span>

namespace corvane::ctl {
namespace {

constexpr qsizetype kWidth = 79;
constexpr int kColumn = 24;  // where descriptions begin

// Appends the words to `begin`, broken into lines; all but the first line are indented.
QString Wrapped(QString begin, const QString& words, int indent) {
  qsizetype length = begin.size();
  for (const QString& word : words.split(' ')) {
    if (length > indent && length + 1 + word.size() > kWidth) {
      begin += '\n' + QString(indent, ' ');
      length = indent;
    } else if (length > indent) {
      begin += ' ';
      ++length;
    }
    begin += word;
    length += word.size();
  }
  return begin + '\n';
}

QString Item(const QString& title, const QString& description) {
  return Wrapped(("  " + title).leftJustified(kColumn), description, kColumn);
}

QString OptionTitle(const Option& option) {
  QString title = option.shortName != nullptr ? QStringLiteral("-%1, ").arg(option.shortName) : "";
  title += QStringLiteral("--") + option.name;
  return option.valueName != nullptr ? title + " " + option.valueName : title;
}

QString Options(const char* heading, std::span<const Option> options) {
  QString text = options.empty() ? "" : QStringLiteral("\n%1:\n").arg(heading);
  for (const Option& option : options)
    text += Item(OptionTitle(option), option.description);
  return text;
}

}  // namespace

QString UsageOf(const Command& command) {
  QString text = QStringLiteral("corvanectl %1 [OPTION...]").arg(command.words);
  for (const Argument& argument : command.arguments) {
    const QString name = QString(argument.name).toUpper();
    text += argument.isOptional ? " [" + name + "]" : " " + name;
  }
  return command.joinsWords ? text + "..." : text;
}

QString HelpOf(const Command& command) {
  QString text = "Usage: " + UsageOf(command) + "\n\n" + Wrapped({}, command.description, 0);
  if (!command.arguments.empty()) text += "\nArguments:\n";
  for (const Argument& argument : command.arguments)
    text += Item(QString(argument.name).toUpper(), argument.description);
  text += Options("Options", OptionsOf(command));
  return text + Options("Options of all commands", CommonOptions());
}

std::vector<const Command*> CommandsBelow(const QStringList& words) {
  std::vector<const Command*> commands;
  for (const Command& command : AllCommands()) {
    if (QString(command.words).split(' ').mid(0, words.size()) == words)
      commands.push_back(&command);
  }
  return commands;
}

QString ListOf(const std::vector<const Command*>& commands) {
  QString text = "Commands (\"corvanectl help COMMAND\" shows more):\n";
  for (const Command* command : commands)
    text += Item(command->words, command->description);
  return text;
}

QString Overview() {
  return "Usage: corvanectl [OPTION...] COMMAND [ARGUMENT...]\n\n"
         "Administers the Corvane server on this machine.\n\n" +
         ListOf(CommandsBelow({})) + Options("Options", CommonOptions()) +
         "\nExit code: 0 done, 1 refused, 2 wrong usage, 3 no server, 4 output lost.\n";
}

}  // namespace corvane::ctl
