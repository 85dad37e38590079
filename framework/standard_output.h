#pragma once

#include <string>
#include <string_view>

#include <QTimer>

namespace corvane {

// Standard output as a log, a line at a time. Lines leave together, a moment later, so that a burst
// of them costs one write. A reader that is gone or does not keep up never blocks the program: what
// does not fit is kept back, up to 1 MiB, and lines past that are dropped and counted in a line of
// their own. Needs a QCoreApplication.
class StandardOutput {
 public:
  StandardOutput();
  // Writes what the reader takes of it.
  ~StandardOutput();
  StandardOutput(const StandardOutput&) = delete;
  StandardOutput& operator=(const StandardOutput&) = delete;

  // Writes the line, with what cannot be seen written out, and a line end.
  void WriteLine(std::string_view line);

 private:
  void WriteInTime();
  // Writes as much of what is kept as does not block; finds out whether the reader is gone.
  void WriteKept();

  std::string myKept;
  std::size_t myDropped = 0;
  bool myClosed = false;
  QTimer myWriting;
};

}  // namespace corvane
