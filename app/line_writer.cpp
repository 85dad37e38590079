#include "app/line_writer.h"

#include <utility>

namespace corvane {

namespace {

constexpr std::size_t kMaxKept = 1024 * 1024;  // bytes

}  // namespace

LineWriter::LineWriter(Sink sink)
    : mySink(std::move(sink)),
      myWriting([this] { WriteInTime(); }, CoalescingTimer::First::Waits) {}

LineWriter::~LineWriter() {
  WriteKept();
  WriteKept();  // the line that reports dropped ones
}

void LineWriter::WriteLine(std::string_view line) {
  if (myClosed) return;
  // The sink may take a burst that is longer than the buffer.
  if (myKept.size() + line.size() >= kMaxKept && myIsTaken) WriteKept();
  if (myKept.size() + line.size() >= kMaxKept) {
    ++myDropped;
    ++myAllDropped;
    return;
  }
  ReportDropped();
  myKept += line;
  myKept += '\n';
  myWriting.Note();
}

void LineWriter::WriteKept() {
  if (myClosed || myKept.empty()) return;
  const StreamWriting writing = mySink(myKept);
  myKept.erase(0, writing.written);
  myIsTaken = writing.written > 0;
  myClosed = writing.isClosed;
  if (myClosed) myKept = {};
  if (myKept.empty()) ReportDropped();
}

void LineWriter::ReportDropped() {
  if (myDropped > 0)
    myKept += "(" + std::to_string(std::exchange(myDropped, 0)) + " lines dropped)\n";
}

void LineWriter::WriteInTime() {
  WriteKept();
  if (!myKept.empty()) myWriting.Note();
}

}  // namespace corvane
