#pragma once

#include <cstddef>
#include <string_view>

namespace corvane {

// Where the process was started without standard input, output or error, opens the system's null
// device in their places: the next file or socket would get the number and what we print with it.
// To be called before anything is opened.
void OpenStandardStreams();

enum class StandardStream { Output, Error };

struct StreamWriting {
  std::size_t written = 0;  // bytes
  bool isClosed = false;    // the reader is gone, or there was none
};

// Writes as much as the stream's reader takes at once: never waits for it. Of 4096 bytes a reader
// that has room takes either all or none.
StreamWriting WriteWithoutWaiting(StandardStream stream, std::string_view bytes);

}  // namespace corvane
