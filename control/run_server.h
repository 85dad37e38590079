#pragma once

#include <functional>

#include "framework/message_box.h"

namespace corvane {

class App;
struct ApplicationHooks;

// Runs the server of the user's data folder: makes its application object, takes quit requests and
// signals, serves the local socket, and calls `run`, which returns the exit code. Returns 1, with
// the reason shown, if another server has the folder or the start fails.
int RunServer(ApplicationHooks& application, const MessageBoxFunction& showMessage,
              const std::function<int(App&)>& run);

}  // namespace corvane
