#include "app/program_start.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>

#include "app/large_memory.h"
#include "net/descriptor_limit.h"
#include "platform/caller.h"
#include "platform/folders.h"
#include "platform/prepare_process.h"
#include "platform/qt_noise.h"
#include "platform/standard_streams.h"

namespace corvane {

void SetUpProcess() {
  OpenStandardStreams();
  PrepareProcess();
  RaiseDescriptorLimit();
  ReturnLargeMemory();
  DropQtNoise();
  // Each report may take a turn of the event loop, and GLib's loop costs more than Qt's own.
  if (!qEnvironmentVariableIsSet("QT_NO_GLIB")) qputenv("QT_NO_GLIB", "1");
}

std::optional<int> AnswerCaller() {
  QCommandLineParser parser;
  QString description =
      "Serves the members of its networks. \"corvanectl set\" changes its settings.";
  if (const auto folder = ApplicationDataFolder()) {
    description += "\nData folder: " + QDir::toNativeSeparators(*folder);
  }
  parser.setApplicationDescription(description);
  const auto answer = AnswerTo(QCoreApplication::arguments(), parser);
  if (!answer) return std::nullopt;
  AnswerOnConsole(*answer);
  return answer->exitCode;
}

}  // namespace corvane
