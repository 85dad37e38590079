#include <algorithm>
#include <initializer_list>
#include <string_view>

#include <QByteArray>

#include "platform/choose_platform.h"

namespace corvane {

bool ChoosePlatform(int argc, const char* const* argv) {
  const auto hasOneOf = [&](std::initializer_list<std::string_view> words) {
    return std::find_first_of(argv, argv + argc, words.begin(), words.end()) != argv + argc;
  };
  if (hasOneOf({"-h", "--help", "-v", "--version"})) return qputenv("QT_QPA_PLATFORM", "offscreen");
  if (qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) return false;
  if (hasOneOf({"-platform", "--platform"})) return false;
  // Only displays named by the desktop are tried: others would cause warnings or lead to another
  // user's session on the same machine.
  QByteArray platforms;
  if (!qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY")) platforms += "wayland;";
  if (!qEnvironmentVariableIsEmpty("DISPLAY")) platforms += "xcb;";
  return qputenv("QT_QPA_PLATFORM", platforms + "offscreen");
}

}  // namespace corvane
