#include <string>

#include <QSystemTrayIcon>

#include "console/application.h"
#include "console/message_boxes.h"
#include "console/my_tray_item.h"
#include "console/platform.h"
#include "console/wnd_main.h"
#include "framework/broken_pipes.h"
#include "framework/folders.h"
#include "framework/large_memory.h"
#include "framework/quit_signals.h"
#include "framework/standard_error.h"
#include "framework/standard_streams.h"
#include "net/descriptor_limit.h"
#include "server/app.h"

using namespace corvane;

int main(int argc, char** argv) {
  OpenStandardStreams();
  IgnoreBrokenPipes();
  RaiseDescriptorLimit();
  ReturnLargeMemory();
  ChoosePlatform(argc, argv);
  Application application(argc, argv);

  App app(ApplicationDataFolder(), MessageBoxesOfThePlatform());
  application.LastResort = [&app] { app.LastResort(); };
  application.Quit = [&app] { app.Quit(); };
  const QuitSignals quitSignals([&app] { app.Quit(); });
  if (!app.Open()) return 1;
  WriteErrorLine("Rules in force: " + std::string(app.RulesInForce().name));

  // The listener inside the window goes before the application object.
  wndMain window(app, QSystemTrayIcon::isSystemTrayAvailable);
  MyTrayItem trayItem(window, [&app] { app.Quit(); });
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
