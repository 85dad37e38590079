#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "framework/coalescing_timer.h"
#include "platform/standard_streams.h"

namespace corvane {

// Writes a log line by line to a sink that may be slow or stuck. Coalesces lines for 20 ms, so a
// burst costs one write. Never blocks: keeps up to 1 MiB that the sink has not taken, drops further
// lines, and later reports their number in one line. Needs a QCoreApplication.
class LineWriter {
 public:
  // Writes as many of the bytes as it can without waiting.
  using Sink = std::function<StreamWriting(std::string_view bytes)>;

  explicit LineWriter(Sink sink);
  // Writes as much of the rest as the sink takes.
  ~LineWriter();
  LineWriter(const LineWriter&) = delete;
  LineWriter& operator=(const LineWriter&) = delete;

  // Writes the line, whose text is already escaped (status_line.h), and a line end.
  void WriteLine(std::string_view line);
  // Writes the kept lines now, as much as the sink takes.
  void WriteKept();
  // Lines dropped since the start.
  std::uint64_t Dropped() const { return myAllDropped; }

 private:
  void WriteInTime();
  void ReportDropped();

  Sink mySink;
  std::string myKept;
  std::size_t myDropped = 0;  // not reported yet
  std::uint64_t myAllDropped = 0;
  bool myIsTaken = true;  // the last write took something
  bool myClosed = false;
  CoalescingTimer myWriting;
};

// A log on standard output.
class StandardOutput : public LineWriter {
 public:
  StandardOutput()
      : LineWriter([](std::string_view bytes) {
          return WriteWithoutWaiting(StandardStream::Output, bytes);
        }) {}
};

}  // namespace corvane
