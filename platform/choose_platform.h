#pragma once

namespace corvane {

// Chooses Qt's platform on Linux: Wayland or X11 if the environment names such a display, else
// "offscreen", which needs none. --help and --version always use "offscreen". Returns false if the
// user has chosen with QT_QPA_PLATFORM or -platform. Call it before creating the QApplication.
bool ChoosePlatform(int argc, const char* const* argv);

}  // namespace corvane
