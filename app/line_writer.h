#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "framework/gathering.h"
#include "platform/standard_streams.h"

namespace corvane {

// A log, a line at a time, to where it may not be taken. Lines leave together, a moment later, so
// that a burst of them costs one write. Who takes none, or not as fast, never blocks the program:
// what does not fit is kept back, up to 1 MiB, and lines past that are dropped and counted in a
// line of their own. Needs a QCoreApplication.
class LineWriter {
 public:
  // Writes as much of the bytes as is taken at once.
  using Sink = std::function<StreamWriting(std::string_view bytes)>;

  explicit LineWriter(Sink sink);
  // Writes what is taken of the rest.
  ~LineWriter();
  LineWriter(const LineWriter&) = delete;
  LineWriter& operator=(const LineWriter&) = delete;

  // Writes the line, in which what misleads is written out (status_line.h), and a line end.
  void WriteLine(std::string_view line);
  // Writes as much of what is kept as does not block, now.
  void WriteKept();

 private:
  void WriteInTime();
  void ReportDropped();

  Sink mySink;
  std::string myKept;
  std::size_t myDropped = 0;
  bool myIsTaken = true;  // some of it was, the last time
  bool myClosed = false;
  Gathering myWriting;
};

// Standard output as a log.
class StandardOutput : public LineWriter {
 public:
  StandardOutput()
      : LineWriter([](std::string_view bytes) {
          return WriteWithoutWaiting(StandardStream::Output, bytes);
        }) {}
};

}  // namespace corvane
