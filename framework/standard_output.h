#pragma once

#include <string>
#include <string_view>

namespace corvane {

// The text with control characters, also line ends, written as \n, \t or \xHH, so that bytes from
// a client cannot forge a line or drive a terminal.
std::string Escaped(std::string_view text);

// Standard output as a log, a line at a time. A reader that is gone or does not keep up never
// blocks the program: what does not fit is kept back, up to 1 MiB, and lines past that are
// dropped and counted in a line of their own.
class StandardOutput {
 public:
  // Writes the line, escaped, with a line end.
  void WriteLine(std::string_view line);

 private:
  void WriteKept();

  std::string myKept;
  std::size_t myDropped = 0;
  bool myClosed = false;
};

}  // namespace corvane
