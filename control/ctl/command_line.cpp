#include "control/ctl/command_line.h"

#include <algorithm>

#include <QCommandLineParser>
#include <QFileInfo>

namespace corvane::ctl {
namespace {

void AddCommonOptions(QCommandLineParser& parser) {
  parser.addOptions({
      {"data-folder",
       "Data folder of the server. If none is given: the user's own; where no server runs there, "
       "that of the machine's service.",
       "FOLDER"},
      {"json", "Show the answers as they come, a JSON object a line."},
      {{"h", "help"}, "Show this help."},
      {{"v", "version"}, "Show the version."},
  });
}

QString Overview(const QCommandLineParser& parser) {
  QString text = parser.helpText() + "\nCommands (corvanectl COMMAND --help tells more):\n";
  for (const Command& command : AllCommands()) {
    text += QStringLiteral("  %1 %2\n").arg(command.words, -19).arg(command.description);
  }
  return text + "\nExit code: 0 done, 1 refused, 2 wrong use, 3 no server.";
}

// The command that the words begin with.
const Command& CommandOf(const QStringList& words) {
  for (const Command& command : AllCommands()) {
    const QStringList own = QString(command.words).split(' ');
    if (words.mid(0, own.size()) == own) return command;
  }
  throw UsageError("there is no command \"" + words.mid(0, 2).join(' ') +
                   "\"; --help names all that there are");
}

void AddCommand(QCommandLineParser& parser, const Command& command) {
  AddCommonOptions(parser);
  parser.setApplicationDescription(command.description);
  parser.addPositionalArgument(command.words, command.description, command.words);
  for (const Argument& argument : command.arguments) {
    parser.addPositionalArgument(argument.name, argument.description,
                                 QString(argument.name).toUpper());
  }
  for (const OptionOf& option : command.options) {
    parser.addOption({option.name, option.description, option.valueName});
  }
  if (command.password != Password::None) {
    parser.addOption({"password-file",
                      "Read the password, a line, from this file; - is standard input.", "FILE"});
  }
  if (command.password == Password::IfAsked) parser.addOption({"password", "Ask for a password."});
}

QJsonValue ValueOf(const QCommandLineParser& parser, const OptionOf& option) {
  if (option.valueName == nullptr) return true;
  const QString text = parser.value(option.name);
  if (QLatin1String(option.valueName) != QLatin1String("NUMBER")) return text;
  bool isNumber = false;
  const int number = text.toInt(&isNumber);
  if (!isNumber) throw UsageError(QStringLiteral("--%1 takes a number").arg(option.name));
  return number;
}

QJsonObject RequestOf(const Command& command, const QCommandLineParser& parser) {
  QJsonObject request{{"command", command.words}};
  const QStringList given = parser.positionalArguments();
  const auto wanted = static_cast<qsizetype>(command.arguments.size());
  if (given.size() < wanted || (given.size() > wanted && !command.joinsWords)) {
    throw UsageError(QStringLiteral("%1 takes %2 argument(s), not %3; --help tells which")
                         .arg(command.words)
                         .arg(wanted)
                         .arg(given.size()));
  }
  for (qsizetype i = 0; i < wanted; ++i) {
    const bool isLast = i + 1 == wanted;
    request[command.arguments[static_cast<std::size_t>(i)].name] =
        isLast ? given.mid(i).join(' ') : given[i];
  }
  if (command.takesFile) {
    QJsonValueRef file = request[command.arguments.front().name];
    file = QFileInfo(file.toString()).absoluteFilePath();
  }
  for (const OptionOf& option : command.options) {
    if (parser.isSet(option.name)) request[option.name] = ValueOf(parser, option);
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

// Of a parser that knows what the words ask for; throws otherwise.
void Parse(QCommandLineParser& parser, const QStringList& arguments) {
  if (!parser.parse(arguments)) throw UsageError(parser.errorText());
}

void TakeCommonOptions(const QCommandLineParser& parser, CommandLine& line) {
  if (parser.isSet("data-folder")) line.dataFolder = parser.value("data-folder");
  line.json = line.json || parser.isSet("json");
}

}  // namespace

CommandLine ParseCommandLine(const QStringList& arguments) {
  CommandLine line;
  QCommandLineParser first;
  first.setApplicationDescription("Administers the Corvane server that runs on this machine.");
  first.setOptionsAfterPositionalArgumentsMode(QCommandLineParser::ParseAsPositionalArguments);
  AddCommonOptions(first);
  first.addPositionalArgument("command", "What to do.", "COMMAND ...");
  const QStringList program{"corvanectl"};
  Parse(first, program + arguments.mid(1));
  TakeCommonOptions(first, line);
  if (first.isSet("version")) {
    line.text = QStringLiteral("corvanectl " CORVANE_VERSION);
    return line;
  }
  const QStringList words = first.positionalArguments();
  if (first.isSet("help")) {
    line.text = Overview(first);
    return line;
  }
  if (words.isEmpty()) throw UsageError("there is no command; --help names all that there are");

  const Command& command = CommandOf(words);
  QCommandLineParser parser;
  AddCommand(parser, command);
  const auto ownWords = QString(command.words).count(' ') + 1;
  Parse(parser, program + words.mid(ownWords));
  TakeCommonOptions(parser, line);
  if (parser.isSet("help")) {
    line.text = parser.helpText();
    return line;
  }
  line.command = &command;
  line.request = RequestOf(command, parser);
  TakePasswordOptions(command, parser, line);
  return line;
}

}  // namespace corvane::ctl
