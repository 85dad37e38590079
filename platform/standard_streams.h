#pragma once

#include <cstddef>
#include <string_view>

namespace corvane {

// Opens the null device in place of standard streams that the process was started without;
// otherwise the next file or socket would get a stream's number and receive the program's output.
// Call it before opening anything.
void OpenStandardStreams();

enum class StandardStream { Output, Error };

struct StreamWriting {
  std::size_t written = 0;  // bytes
  bool isClosed = false;    // the stream has no reader
};

// Writes as many bytes as the stream accepts without waiting. A pipe accepts 4096 bytes or fewer
// as a whole or not at all.
StreamWriting WriteWithoutWaiting(StandardStream stream, std::string_view bytes);

}  // namespace corvane
