#pragma once

namespace corvane {

// Where the process was started without standard input, output or error, opens the system's null
// device in their places: the next file or socket would get the number and what we print with it.
// To be called before anything is opened.
void OpenStandardStreams();

}  // namespace corvane
