// The server with its window and tray icon. Without a display it builds no window.

#include <QSystemTrayIcon>

#include "app/app.h"
#include "app/program_start.h"
#include "console/application.h"
#include "console/message_boxes.h"
#include "console/my_tray_item.h"
#include "console/wnd_main.h"
#include "control/run_server.h"
#include "platform/choose_platform.h"

int main(int argc, char** argv) {
  using namespace corvane;
  SetUpProcess();
  ChoosePlatform(argc, argv);
  Application application(argc, argv);
  if (const auto exitCode = AnswerCaller()) return *exitCode;
  return RunServer(application, MessageBoxesOfThePlatform(), [](App& app) {
    if (!HasDisplay()) return app.Run(Application::exec, [&app] { app.LoadServerSocket(); });
    wndMain window(app, QSystemTrayIcon::isSystemTrayAvailable);
    MyTrayItem trayItem(window, [&app] { app.Op().Quit(); });
    trayItem.show();
    return app.Run(Application::exec, [&window] { window.Open(); });
  });
}
