// The server with its window and tray icon. Without a display it builds no window.

#include <optional>

#include <QSystemTrayIcon>

#include "app/app.h"
#include "app/program_start.h"
#include "console/application.h"
#include "console/has_display.h"
#include "console/message_boxes.h"
#include "console/my_tray_item.h"
#include "console/wnd_main.h"
#include "control/commands.h"
#include "control/control_server.h"
#include "platform/choose_platform.h"
#include "platform/folders.h"
#include "platform/process_signals.h"

int main(int argc, char** argv) {
  using namespace corvane;
  SetUpProcess();
  ChoosePlatform(argc, argv);
  Application application(argc, argv);
  if (const auto exitCode = AnswerCaller()) return *exitCode;

  const std::optional<QString> folder = ApplicationDataFolder();
  ControlServer control;
  if (folder && !control.TakeOrTell(*folder, MessageBoxesOfThePlatform())) return 1;
  App app(folder, MessageBoxesOfThePlatform());
  application.LastResort = [&app] { app.LastResort(); };
  application.Quit = [&app] { app.QuitFor("desktop"); };
  std::optional<Commands> commands;
  const ProcessSignals signals([&app] { app.QuitFor("signal"); },
                               [&commands] {
                                 if (commands) commands->ReloadForSignal();
                               });
  if (!app.Open()) return 1;

  std::optional<wndMain> window;
  std::optional<MyTrayItem> trayItem;
  if (HasDisplay()) {
    window.emplace(app, QSystemTrayIcon::isSystemTrayAvailable);
    trayItem.emplace(*window, [&app] { app.Actions().Quit(); });
  }
  commands.emplace(app.Actions());
  control.Serve(*commands);
  if (trayItem) trayItem->show();
  return app.Run(Application::exec, [&] { window ? window->Open() : app.LoadServerSocket(); });
}
