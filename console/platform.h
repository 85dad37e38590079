#pragma once

namespace corvane {

// Chooses Qt's platform where the user did not, by QT_QPA_PLATFORM or by an argument -platform:
// on Linux Wayland, else X11, as far as the environment names them, else none at all, which is how
// the program runs without a display. Has Qt run its own loop there, and not GLib's.
// Call it before QApplication is made.
void ChoosePlatform(int argc, const char* const* argv);

// Whether somebody may be looking; after QApplication was made.
bool HasDisplay();

}  // namespace corvane
