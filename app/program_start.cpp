#include "app/program_start.h"

#include <QCommandLineParser>
#include <QCoreApplication>

#include "app/large_memory.h"
#include "net/descriptor_limit.h"
#include "platform/broken_pipes.h"
#include "platform/caller.h"
#include "platform/qt_noise.h"
#include "platform/standard_streams.h"

namespace corvane {

void SetUpProcess() {
  OpenStandardStreams();
  IgnoreBrokenPipes();
  RaiseDescriptorLimit();
  ReturnLargeMemory();
  DropQtNoise();
  // Each report may take a turn of the event loop, and GLib's loop costs more than Qt's own.
  if (!qEnvironmentVariableIsSet("QT_NO_GLIB")) qputenv("QT_NO_GLIB", "1");
}

std::optional<int> AnswerCaller() {
  QCommandLineParser parser;
  parser.setApplicationDescription(
      "Serves the members of its networks; the settings are in its data folder.");
  const auto answer = AnswerTo(QCoreApplication::arguments(), parser);
  if (!answer) return std::nullopt;
  AnswerOnConsole(*answer);
  return answer->exitCode;
}

}  // namespace corvane
