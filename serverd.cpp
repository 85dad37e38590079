// The server without a window, administered by corvanectl. Message boxes go to standard error.

#include "app/app.h"
#include "app/program_start.h"
#include "app/server_application.h"
#include "control/run_server.h"

int main(int argc, char** argv) {
  using namespace corvane;
  SetUpProcess();
  ServerApplication<QCoreApplication> application(argc, argv);
  if (const auto exitCode = AnswerCaller()) return *exitCode;
  return RunServer(application, MessageToStandardError, [](App& app) {
    return app.Run(QCoreApplication::exec, [&app] { app.LoadServerSocket(); });
  });
}
