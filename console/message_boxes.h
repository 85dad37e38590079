#pragma once

#include "framework/message_box.h"

namespace corvane {

// Shows the box on the screen, modal to the active window, its text as plain text, and waits for
// the answer; the end of the program reads as no. Runs a nested event loop: never call it from a
// pass over the sockets.
MessageBox::Answer ShowMessageBox(const MessageBox& box);

// The function to install: boxes on the screen, or lines on standard error where the program runs
// without a display. Needs a QApplication.
MessageBoxFunction MessageBoxesOfThePlatform();

}  // namespace corvane
