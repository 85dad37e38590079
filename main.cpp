#include <optional>
#include <string>

#include <QCommandLineParser>
#include <QDir>
#include <QFileInfo>
#include <QSystemTrayIcon>

#include "app/app.h"
#include "console/application.h"
#include "console/has_display.h"
#include "console/message_boxes.h"
#include "console/my_tray_item.h"
#include "console/wnd_main.h"
#include "control/commands.h"
#include "control/control_server.h"
#include "framework/broken_pipes.h"
#include "framework/caller.h"
#include "framework/choose_platform.h"
#include "framework/folders.h"
#include "framework/large_memory.h"
#include "framework/message_box.h"
#include "framework/process_signals.h"
#include "framework/qt_noise.h"
#include "framework/standard_error.h"
#include "framework/standard_streams.h"
#include "framework/text.h"
#include "net/descriptor_limit.h"

using namespace corvane;

namespace {

// Takes the local socket, and tells why where that fails. Whether this is the one server of its
// folder, as far as is known.
bool Claim(ControlServer& control, const QString& folder, const MessageBoxFunction& showMessage) {
  // The application tells of it.
  if (!QDir(folder).exists()) return true;
  const ControlServer::Claim claim = control.Take(folder);
  if (claim == ControlServer::Claim::Taken) {
    MessageBox box;
    box.text = "Another server is running on the data folder\n" +
               QDir::toNativeSeparators(folder).toStdString();
    showMessage(box);
    return false;
  }
  if (claim == ControlServer::Claim::Failed) {
    const std::string why =
        QFileInfo(folder).isWritable()
            ? control.Error()
            : TextFromDisplay(QDir::toNativeSeparators(folder)) + " cannot be written to.";
    WriteErrorLine("corvanectl cannot reach this server: " + why);
  }
  return true;
}

// What has to be done before there is a QApplication.
void SetUpProcess(int argc, const char* const* argv) {
  OpenStandardStreams();
  IgnoreBrokenPipes();
  RaiseDescriptorLimit();
  ReturnLargeMemory();
  DropQtNoise();
  ChoosePlatform(argc, argv);
  // Each report may take a turn of Qt's loop, and GLib's turns cost more than Qt's own.
  if (!qEnvironmentVariableIsSet("QT_NO_GLIB")) qputenv("QT_NO_GLIB", "1");
}

}  // namespace

int main(int argc, char** argv) {
  SetUpProcess(argc, argv);
  Application application(argc, argv);
  QCommandLineParser parser;
  parser.setApplicationDescription(
      "Serves the members of its networks; the settings are in its "
      "data folder.");
  if (const auto answer = AnswerTo(Application::arguments(), parser)) {
    TellCaller(*answer);
    return answer->exitCode;
  }

  const std::optional<QString> folder = ApplicationDataFolder();
  ControlServer control;
  if (folder && !Claim(control, *folder, MessageBoxesOfThePlatform())) return 1;
  App app(folder, MessageBoxesOfThePlatform());
  application.LastResort = [&app] { app.LastResort(); };
  application.Quit = [&app] { app.QuitFor("desktop"); };
  std::optional<Commands> commands;
  const ProcessSignals signals([&app] { app.QuitFor("signal"); },
                               [&commands] {
                                 if (commands) commands->ReloadForSignal();
                               });
  if (!app.Open()) return 1;

  wndMain window(app, QSystemTrayIcon::isSystemTrayAvailable);
  MyTrayItem trayItem(window, [&app] { app.Actions().Quit(); });
  commands.emplace(app.Actions());
  control.Serve(*commands);
  if (HasDisplay()) {
    trayItem.show();
  } else {
    window.ShowToNobody();
  }
  return app.Run(Application::exec, [&window] { window.Open(); });
}
