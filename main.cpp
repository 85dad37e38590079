#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <QCommandLineParser>
#include <QDir>
#include <QFileInfo>
#include <QSystemTrayIcon>

#include "app/app.h"
#include "app/server_log.h"
#include "app/write_faults.h"
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
#include "framework/service_manager.h"
#include "framework/standard_error.h"
#include "framework/standard_streams.h"
#include "framework/status_line.h"
#include "framework/text.h"
#include "net/descriptor_limit.h"
#include "server/map_socket.h"
#include "server/setting.h"
#include "updater/version.h"

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

// What the operator is told is logged, too.
MessageBoxFunction Logging(ServerLog& log, MessageBoxFunction showMessage) {
  return [&log, show = std::move(showMessage)](const MessageBox& box) {
    if (box.kind == MessageBox::Kind::Message) log.Write(StatusLine({box.text}));
    return show(box);
  };
}

void Tell(const std::vector<std::string>& faults, ServerLog& log) {
  for (const std::string& fault : faults) {
    WriteErrorLine(fault);
    log.Write(StatusLine({fault}));
  }
}

void TellStart(const App& app, ServerLog& log) {
  const std::string rules = "Rules in force: " + std::string(app.RulesInForce().name);
  WriteErrorLine(rules);
  log.WriteAudit("Started, version " + RunningVersion().FullVersion());
  log.WriteAudit(rules);
}

void LogEvents(MapSocket& listener, ServerLog& log) {
  listener.Logged = [&log](const std::string& line) { log.Write(line); };
  listener.Audited = [&log](const std::string& line) { log.WriteAudit(line); };
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
  // Outlives all that writes into it.
  ServerLog log(folder);
  if (folder) Tell(WriteFaults(*folder), log);
  App app(folder, Logging(log, MessageBoxesOfThePlatform()));
  const auto writeLine = [&log](const std::string& text) { log.Write(StatusLine({text})); };
  app.Settings().Complained = writeLine;
  app.serverdb().Complained = writeLine;
  app.Locations().Told = writeLine;
  application.LastResort = [&app] { app.LastResort(); };
  std::optional<Commands> commands;
  const auto quit = [&](const char* actor) { commands ? commands->QuitFor(actor) : app.Quit(); };
  application.Quit = [&] { quit("desktop"); };
  const ProcessSignals signals([&] { quit("signal"); },
                               [&commands] {
                                 if (commands) commands->ReloadForSignal();
                               });
  if (!app.Open()) return 1;
  Tell(FaultsOf(app.Settings()), log);
  TellStart(app, log);

  wndMain window(app, QSystemTrayIcon::isSystemTrayAvailable);
  LogEvents(app.Listener(), log);
  MyTrayItem trayItem(window, [&app] { app.Actions().Quit(); });
  commands.emplace(app, app.Listener(), app.Actions(), log);
  control.Serve(*commands);
  if (HasDisplay()) {
    trayItem.show();
  } else {
    window.ShowToNobody();
  }
  // From the loop, where quitting and errors are provided for.
  QMetaObject::invokeMethod(
      &window,
      [&] {
        window.Open();
        if (app.Listener().IsListening()) TellServiceManager(ServiceState::Ready);
      },
      Qt::QueuedConnection);
  QObject::connect(&application, &Application::aboutToQuit,
                   [] { TellServiceManager(ServiceState::Stopping); });
  const int code = Application::exec();
  log.WriteAudit("Ended with code " + std::to_string(code));
  return code;
}
