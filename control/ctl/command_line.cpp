#include "control/ctl/command_line.h"

#include <algorithm>
#include <span>
#include <string_view>

#include <QCommandLineParser>
#include <QFileInfo>

#include "control/ctl/completion.h"
#include "control/ctl/help.h"
#include "platform/folders.h"

namespace corvane::ctl {
namespace {

void AddOptions(QCommandLineParser& parser, std::span<const Option> options) {
  for (const Option& option : options) {
    QStringList names{option.name};
    if (option.shortName != nullptr) names.push_front(option.shortName);
    parser.addOption({names, option.description, option.valueName});
  }
}

// The command that the words begin with; null if they only name a group, such as "network".
const Command* CommandOf(const QStringList& words) {
  for (const Command& command : AllCommands()) {
    const QStringList own = QString(command.words).split(' ');
    if (words.mid(0, own.size()) == own) return &command;
  }
  const auto group = CommandsBelow(words.first(1));
  if (!group.empty() && (words.size() == 1 || words[1].startsWith('-'))) return nullptr;
  throw UsageError(QStringLiteral("there is no command \"%1\"\n\n%2")
                       .arg(words.first(group.empty() ? 1 : 2).join(' '),
                            ListOf(group.empty() ? CommandsBelow({}) : group)));
}

[[noreturn]] void ThrowUsage(const Command& command, const QString& fault) {
  throw UsageError(QStringLiteral("%1: %2\nUsage: %3").arg(command.words, fault, UsageOf(command)));
}

QJsonValue ValueOf(const Command& command, const QCommandLineParser& parser, const Option& option) {
  if (option.valueName == nullptr) return true;
  const QString text = parser.value(option.name);
  const QString name = QStringLiteral("--") + option.name;
  if (text.isEmpty()) ThrowUsage(command, name + " is empty");
  if (QLatin1String(option.valueName) != QLatin1String("NUMBER")) return text;
  bool isNumber = false;
  const int number = text.toInt(&isNumber);
  if (!isNumber) ThrowUsage(command, name + " takes a number, not \"" + text + '"');
  return number;
}

void TakeArguments(const Command& command, const QStringList& given, QJsonObject& request) {
  qsizetype next = 0;
  for (const Argument& argument : command.arguments) {
    const QString name = QString(argument.name).toUpper();
    if (next == given.size() && argument.isOptional) continue;
    if (next == given.size()) ThrowUsage(command, name + " is missing");
    const bool takesRest = command.joinsWords && &argument == &command.arguments.back();
    const QString text = takesRest ? given.mid(next).join(' ') : given[next];
    if (text.isEmpty() && !argument.mayBeEmpty) ThrowUsage(command, name + " is empty");
    request[argument.name] = text;
    next = takesRest ? given.size() : next + 1;
  }
  if (next < given.size()) {
    ThrowUsage(command, '"' + given[next] + "\" is one argument too many");
  }
}

QJsonObject RequestOf(const Command& command, const QCommandLineParser& parser) {
  QJsonObject request{{"command", command.words}};
  TakeArguments(command, parser.positionalArguments(), request);
  if (command.takesFile) {
    QJsonValueRef file = request[command.arguments.front().name];
    file = QFileInfo(file.toString()).absoluteFilePath();
  }
  const auto isSet = [&parser](const Option& option) { return parser.isSet(option.name); };
  for (const Option& option : command.options) {
    if (isSet(option)) request[option.name] = ValueOf(command, parser, option);
  }
  if (command.needsOption && std::ranges::none_of(OptionsOf(command), isSet)) {
    QStringList names;
    for (const Option& option : OptionsOf(command))
      names.push_back(QStringLiteral("--") + option.name);
    ThrowUsage(command, "nothing to change; expected one of " + names.join(", "));
  }
  return request;
}

void TakePasswordOptions(const Command& command, const QCommandLineParser& parser,
                         CommandLine& line) {
  if (command.password == Password::None) return;
  if (parser.isSet("password-file")) {
    line.passwordFile = parser.value("password-file");
  } else {
    line.asksPassword = command.password == Password::Always || parser.isSet("password");
  }
}

void TakeCommonOptions(const QCommandLineParser& parser, CommandLine& line) {
  if (parser.isSet("data-folder")) line.dataFolder = parser.value("data-folder");
  if (line.dataFolder == "") throw UsageError("--data-folder is empty");
  if (parser.isSet("instance")) {
    if (parser.isSet("data-folder")) throw UsageError("expected --data-folder or --instance");
    line.dataFolder = InstanceDataFolder(parser.value("instance"));
    if (!line.dataFolder) {
      throw UsageError("there cannot be an instance \"" + parser.value("instance") + '"');
    }
  }
  line.json = line.json || parser.isSet("json");
  line.all = line.all || parser.isSet("all");
}

// `words` begins with the words of the command.
void TakeCommand(const Command& command, const QStringList& words, CommandLine& line) {
  QCommandLineParser parser;
  AddOptions(parser, CommonOptions());
  AddOptions(parser, OptionsOf(command));
  if (!parser.parse(QStringList{"corvanectl"} + words.mid(QString(command.words).count(' ') + 1))) {
    ThrowUsage(command, parser.errorText());
  }
  TakeCommonOptions(parser, line);
  if (parser.isSet("help")) {
    line.text = HelpOf(command);
    return;
  }
  line.command = &command;
  if (line.all && command.words != std::string_view("status")) {
    ThrowUsage(command, "--all is for \"status\" only");
  }
  line.request = RequestOf(command, parser);
  TakePasswordOptions(command, parser, line);
}

}  // namespace

CommandLine ParseCommandLine(const QStringList& arguments) {
  CommandLine line;
  QCommandLineParser parser;
  parser.setOptionsAfterPositionalArgumentsMode(QCommandLineParser::ParseAsPositionalArguments);
  AddOptions(parser, CommonOptions());
  if (!parser.parse(QStringList{"corvanectl"} + arguments.mid(1))) {
    throw UsageError(parser.errorText());
  }
  TakeCommonOptions(parser, line);
  if (parser.isSet("version")) {
    line.text = QStringLiteral("corvanectl " CORVANE_VERSION "\n");
    return line;
  }
  QStringList words = parser.positionalArguments();
  if (words.mid(0, 2) == QStringList{"complete", "--"}) {
    line.text = Completions(words.mid(2));
    return line;
  }
  const bool isHelp = words.value(0) == "help";
  if (isHelp) words.removeFirst();
  const bool asksHelp = isHelp || parser.isSet("help");
  if (words.isEmpty()) {
    if (!asksHelp) throw UsageError("no command\n\n" + Overview());
    line.text = Overview();
    return line;
  }
  const Command* const command = CommandOf(words);
  if (command == nullptr) {
    const QString list = ListOf(CommandsBelow(words.first(1)));
    if (!asksHelp && words.size() == 1) {
      throw UsageError(words[0] + " is not a complete command\n\n" + list);
    }
    line.text = list;
  } else if (asksHelp) {
    line.text = HelpOf(*command);
  } else {
    TakeCommand(*command, words, line);
  }
  return line;
}

}  // namespace corvane::ctl
