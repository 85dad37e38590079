#pragma once

#include <optional>

#include <QCommandLineParser>
#include <QString>
#include <QStringList>

namespace corvane {

// What a program says instead of starting.
struct CallerAnswer {
  QString text;
  int exitCode = 0;  // 2 for a wrong command line
};

// Has the parser, which is given --help and --version, read the arguments, of which the first is
// the program's name. The answer to those two, or to a word that the parser does not know; none if
// the program is to start.
std::optional<CallerAnswer> AnswerTo(const QStringList& arguments, QCommandLineParser& parser);

// Prints the text, or shows it in a box on Windows, where a program with windows has no console.
void TellCaller(const CallerAnswer& answer);

}  // namespace corvane
