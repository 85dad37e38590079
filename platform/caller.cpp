#include "platform/caller.h"

#include <QCoreApplication>
#include <QFileInfo>

namespace corvane {

std::optional<CallerAnswer> AnswerTo(const QStringList& arguments, QCommandLineParser& parser,
                                     qsizetype maxWords) {
  // Qt's own help option would add --help-all with Qt's options.
  const QCommandLineOption help({"h", "help"}, "Show this help.");
  const QCommandLineOption version({"v", "version"}, "Show the version.");
  parser.addOptions({help, version});
  if (!parser.parse(arguments)) return CallerAnswer{parser.errorText(), 2};
  const QString name = QFileInfo(arguments.first()).baseName();
  if (parser.isSet(help)) {
    return CallerAnswer{parser.helpText().replace(QCoreApplication::arguments().first(), name)};
  }
  if (parser.isSet(version)) {
    return CallerAnswer{name + ' ' + QCoreApplication::applicationVersion()};
  }
  const QStringList words = parser.positionalArguments();
  if (words.size() <= maxWords) return std::nullopt;
  return CallerAnswer{QStringLiteral("Unknown word '%1'.").arg(words[maxWords]), 2};
}

}  // namespace corvane
