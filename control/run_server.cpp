#include "control/run_server.h"

#include <optional>

#include "app/app.h"
#include "app/server_application.h"
#include "control/commands.h"
#include "control/control_server.h"
#include "platform/folders.h"
#include "platform/process_signals.h"

namespace corvane {

int RunServer(ApplicationHooks& application, const MessageBoxFunction& showMessage,
              const std::function<int(App&)>& run) {
  const std::optional<QString> folder = ApplicationDataFolder();
  ControlServer control;
  if (folder && !control.TakeOrReport(*folder, showMessage)) return 1;
  App app(folder, showMessage);
  application.LastResort = [&app] { app.LastResort(); };
  application.Quit = [&app] { app.QuitFor("desktop"); };
  std::optional<Commands> commands;
  const ProcessSignals signals([&app] { app.QuitFor("signal"); },
                               [&commands] {
                                 if (commands) commands->ReloadForSignal();
                               });
  if (!app.Open()) return 1;
  commands.emplace(app.Op());
  control.Serve(*commands);
  application.Passes = &app.Loop().Passes();
  const int code = run(app);
  application.Passes = nullptr;
  return code;
}

}  // namespace corvane
