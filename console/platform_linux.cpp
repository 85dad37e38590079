#include <algorithm>
#include <csignal>
#include <string_view>

#include <QByteArray>

#include "console/platform.h"

namespace corvane {

void IgnoreBrokenPipes() {
  std::signal(SIGPIPE, SIG_IGN);
}

void ChoosePlatform(int argc, const char* const* argv) {
  const auto isPlatform = [](std::string_view argument) {
    return argument == "-platform" || argument == "--platform";
  };
  if (qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) return;
  if (std::any_of(argv, argv + argc, isPlatform)) return;
  qputenv("QT_QPA_PLATFORM", "wayland;xcb;offscreen");
}

}  // namespace corvane
