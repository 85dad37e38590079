// The server without a window, administered by corvanectl. What would be a message box goes to
// standard error.

#include <optional>

#include "app/app.h"
#include "app/program_start.h"
#include "app/server_application.h"
#include "control/commands.h"
#include "control/control_server.h"
#include "platform/folders.h"
#include "platform/process_signals.h"

int main(int argc, char** argv) {
  using namespace corvane;
  SetUpProcess();
  ServerApplication<QCoreApplication> application(argc, argv);
  if (const auto exitCode = AnswerCaller()) return *exitCode;

  const std::optional<QString> folder = ApplicationDataFolder();
  ControlServer control;
  if (folder && !control.TakeOrTell(*folder, MessageToStandardError)) return 1;
  App app(folder, MessageToStandardError);
  application.LastResort = [&app] { app.LastResort(); };
  std::optional<Commands> commands;
  const ProcessSignals signals([&app] { app.QuitFor("signal"); },
                               [&commands] {
                                 if (commands) commands->ReloadForSignal();
                               });
  if (!app.Open()) return 1;

  commands.emplace(app.Actions());
  control.Serve(*commands);
  return app.Run(QCoreApplication::exec, [&app] { app.LoadServerSocket(); });
}
