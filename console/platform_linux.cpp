#include <algorithm>
#include <string_view>

#include <QByteArray>

#include "console/platform.h"

namespace corvane {

void ChoosePlatform(int argc, const char* const* argv) {
  // Each report may take a turn of the loop, and GLib's turns cost more than Qt's own. Nothing here
  // needs GLib's.
  if (!qEnvironmentVariableIsSet("QT_NO_GLIB")) qputenv("QT_NO_GLIB", "1");
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
