#pragma once

namespace corvane {

// Chooses Qt's platform: on Linux Wayland, else X11, as far as the environment names them, else
// "offscreen", which needs no display and is what --help and --version get. Whether it did: the
// user may have chosen by QT_QPA_PLATFORM or by an argument -platform. Call it before QApplication
// is made.
bool ChoosePlatform(int argc, const char* const* argv);

}  // namespace corvane
