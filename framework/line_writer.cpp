#include "framework/line_writer.h"

#include <chrono>
#include <utility>

#include "framework/text.h"
#include "framework/visible_text.h"

namespace corvane {

namespace {

constexpr std::size_t kMaxKept = 1024 * 1024;  // bytes
constexpr std::chrono::milliseconds kGatheringTime{20};

}  // namespace

LineWriter::LineWriter(Sink sink) : mySink(std::move(sink)) {
  myWriting.setSingleShot(true);
  myWriting.setInterval(kGatheringTime);
  QObject::connect(&myWriting, &QTimer::timeout, [this] { WriteInTime(); });
}

LineWriter::~LineWriter() {
  WriteKept();
}

void LineWriter::WriteLine(std::string_view line) {
  if (myClosed) return;
  const std::string next = Escaped(line);
  std::string dropped;
  if (myDropped > 0) dropped = "(" + std::to_string(myDropped) + " lines dropped)\n";
  if (myKept.size() + dropped.size() + next.size() + 1 > kMaxKept) {
    ++myDropped;
    return;
  }
  myDropped = 0;
  myKept += dropped;
  myKept += next;
  myKept += '\n';
  if (!myWriting.isActive()) myWriting.start();
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
  if (!myKept.empty()) myWriting.start();
}

}  // namespace corvane
