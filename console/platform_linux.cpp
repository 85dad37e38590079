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
  // Where no display is named none is looked for, which would only end in warnings.
  const bool isDisplayNamed =
      !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY") || !qEnvironmentVariableIsEmpty("DISPLAY");
  qputenv("QT_QPA_PLATFORM", isDisplayNamed ? "wayland;xcb;offscreen" : "offscreen");
}

}  // namespace corvane
