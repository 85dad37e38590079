#include <optional>
#include <string>

#include <QDir>
#include <QSystemTrayIcon>

#include "console/application.h"
#include "console/message_boxes.h"
#include "console/my_tray_item.h"
#include "console/platform.h"
#include "console/wnd_main.h"
#include "control/commands.h"
#include "control/control_server.h"
#include "framework/broken_pipes.h"
#include "framework/folders.h"
#include "framework/large_memory.h"
#include "framework/quit_signals.h"
#include "framework/standard_error.h"
#include "framework/standard_streams.h"
#include "net/descriptor_limit.h"
#include "server/app.h"

using namespace corvane;

namespace {

// Takes the local socket, and tells why where that fails.
ControlServer::Claim Claim(ControlServer& control, const std::optional<QString>& folder, App& app) {
  // The application says so.
  if (!folder || !QDir(*folder).exists()) return ControlServer::Claim::Failed;
  const ControlServer::Claim claim = control.Take(*folder);
  if (claim == ControlServer::Claim::Taken) {
    MessageBox box;
    box.text = "Another server is running on the data folder\n" +
               QDir::toNativeSeparators(*folder).toStdString();
    app.ShowMessage(box);
  } else if (claim == ControlServer::Claim::Failed) {
    WriteErrorLine("corvanectl cannot reach this server: " + control.Error());
  }
  return claim;
}

}  // namespace

int main(int argc, char** argv) {
  OpenStandardStreams();
  IgnoreBrokenPipes();
  RaiseDescriptorLimit();
  ReturnLargeMemory();
  ChoosePlatform(argc, argv);
  Application application(argc, argv);

  const std::optional<QString> folder = ApplicationDataFolder();
  App app(folder, MessageBoxesOfThePlatform());
  application.LastResort = [&app] { app.LastResort(); };
  application.Quit = [&app] { app.Quit(); };
  const QuitSignals quitSignals([&app] { app.Quit(); });
  ControlServer control;
  const ControlServer::Claim claim = Claim(control, folder, app);
  if (claim == ControlServer::Claim::Taken || !app.Open()) return 1;
  WriteErrorLine("Rules in force: " + std::string(app.RulesInForce().name));

  // The listener inside the window goes before the application object.
  wndMain window(app, QSystemTrayIcon::isSystemTrayAvailable);
  MyTrayItem trayItem(window, [&app] { app.Quit(); });
  Commands commands(app, *window.sSocket, window.Actions());
  control.Serve(commands);
  if (HasDisplay()) {
    trayItem.show();
  } else {
    window.ShowToNobody();
  }
  // From the loop, where quitting and errors are provided for.
  QMetaObject::invokeMethod(
      &window, [&window] { window.Open(); }, Qt::QueuedConnection);
  return Application::exec();
}
