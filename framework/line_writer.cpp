#include "framework/line_writer.h"

#include <utility>

namespace corvane {

namespace {

constexpr std::size_t kMaxKept = 1024 * 1024;  // bytes

}  // namespace

LineWriter::LineWriter(Sink sink)
    : mySink(std::move(sink)), myWriting([this] { WriteInTime(); }, Gathering::First::Waits) {}

LineWriter::~LineWriter() {
  WriteKept();
}

void LineWriter::WriteLine(std::string_view line) {
  if (myClosed) return;
  std::string dropped;
  if (myDropped > 0) dropped = "(" + std::to_string(myDropped) + " lines dropped)\n";
  if (myKept.size() + dropped.size() + line.size() + 1 > kMaxKept) {
    ++myDropped;
    return;
  }
  myDropped = 0;
  myKept += dropped;
  myKept += line;
  myKept += '\n';
  myWriting.Note();
}

void LineWriter::WriteKept() {
  if (myClosed || myKept.empty()) return;
  const StreamWriting writing = mySink(myKept);
  myKept.erase(0, writing.written);
  myClosed = writing.isClosed;
  if (myClosed) myKept = {};
}

void LineWriter::WriteInTime() {
  WriteKept();
  if (!myKept.empty()) myWriting.Note();
}

}  // namespace corvane
