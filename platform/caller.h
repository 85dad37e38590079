#pragma once

#include <optional>

#include <QCommandLineParser>
#include <QString>
#include <QStringList>

namespace corvane {

// A program's answer on the command line, given instead of starting.
struct CallerAnswer {
  QString text;
  int exitCode = 0;  // 2 for a wrong command line
};

// Adds --help and --version to the parser and parses the arguments, the first of which is the
// program's name. Returns the answer to these two or to an invalid argument, such as more words
// than `maxWords` that are no options; none if the program should start.
std::optional<CallerAnswer> AnswerTo(const QStringList& arguments, QCommandLineParser& parser,
                                     qsizetype maxWords = 0);

// Prints the text. On Windows a program with windows has no console and shows a message box.
void AnswerOnConsole(const CallerAnswer& answer);

}  // namespace corvane
