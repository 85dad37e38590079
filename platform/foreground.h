#pragma once

namespace corvane {

// Lets other programs bring their windows to the front, which Windows otherwise allows only the
// program that the user has just used. Other systems do not ask.
void LetOthersComeToFront();

}  // namespace corvane
