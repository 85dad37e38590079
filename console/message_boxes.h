#pragma once

#include "framework/message_box.h"

namespace corvane {

// Shows the box, modal to the active window, with its text as plain text, and waits for the answer;
// when the program quits, the answer is No. Runs a nested event loop, so never call it from a pass
// over the sockets.
MessageBox::Answer ShowMessageBox(const MessageBox& box);

// Boxes on the screen, or lines on standard error if there is no display. Needs a QApplication.
MessageBoxFunction MessageBoxesOfThePlatform();

}  // namespace corvane
