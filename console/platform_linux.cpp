#include <algorithm>
#include <string_view>

#include <QByteArray>

#include "console/platform.h"

namespace corvane {

void ChoosePlatform(int argc, const char* const* argv) {
  const auto isPlatform = [](std::string_view argument) {
    return argument == "-platform" || argument == "--platform";
  };
  if (qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) return;
  if (std::any_of(argv, argv + argc, isPlatform)) return;
  // Only what the desktop names is tried: looking for the rest would end in warnings, or in the
  // session of somebody else on the same machine.
  QByteArray platforms;
  if (!qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY")) platforms += "wayland;";
  if (!qEnvironmentVariableIsEmpty("DISPLAY")) platforms += "xcb;";
  qputenv("QT_QPA_PLATFORM", platforms + "offscreen");
}

}  // namespace corvane
