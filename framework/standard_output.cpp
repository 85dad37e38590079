#include "framework/standard_output.h"

#include <chrono>

#include "framework/standard_streams.h"
#include "framework/text.h"

namespace corvane {

namespace {

constexpr std::size_t kMaxKept = 1024 * 1024;  // bytes
constexpr std::chrono::milliseconds kGatheringTime{20};

void AppendEscape(std::string& output, unsigned char code) {
  constexpr std::string_view kHexDigits = "0123456789ABCDEF";
  output += "\\x";
  output += kHexDigits[code >> 4];
  output += kHexDigits[code & 15];
}

}  // namespace

std::string Escaped(std::string_view text) {
  // Controls exist above ASCII too: U+0080 to U+009F, in UTF-8 the byte C2 before their code.
  constexpr unsigned char kC1Lead = 0xC2;
  constexpr unsigned char kFirstAfterC1 = 0xA0;
  constexpr unsigned char kDelete = 0x7F;
  const std::string valid = TextFromDisplay(DisplayText(text));
  std::string output;
  output.reserve(valid.size());
  for (std::size_t i = 0; i < valid.size(); ++i) {
    const auto byte = static_cast<unsigned char>(valid[i]);
    if (byte == '\n') {
      output += "\\n";
    } else if (byte == '\t') {
      output += "\\t";
    } else if (byte < ' ' || byte == kDelete) {
      AppendEscape(output, byte);
    } else if (byte == kC1Lead && static_cast<unsigned char>(valid[i + 1]) < kFirstAfterC1) {
      AppendEscape(output, static_cast<unsigned char>(valid[++i]));
    } else {
      output += valid[i];
    }
  }
  return output;
}

StandardOutput::StandardOutput() {
  myWriting.setSingleShot(true);
  myWriting.setInterval(kGatheringTime);
  QObject::connect(&myWriting, &QTimer::timeout, [this] { WriteInTime(); });
}

StandardOutput::~StandardOutput() {
  WriteKept();
}

void StandardOutput::WriteLine(std::string_view line) {
  if (myClosed) return;
  std::string next = Escaped(line) + '\n';
  if (myDropped > 0) next.insert(0, "(" + std::to_string(myDropped) + " lines dropped)\n");
  if (myKept.size() + next.size() > kMaxKept) {
    ++myDropped;
    return;
  }
  myDropped = 0;
  myKept += next;
  if (!myWriting.isActive()) myWriting.start();
}

void StandardOutput::WriteKept() {
  if (myClosed) return;
  const StreamWriting writing = WriteWithoutWaiting(StandardStream::Output, myKept);
  myKept.erase(0, writing.written);
  myClosed = writing.isClosed;
  if (myClosed) myKept = {};
}

void StandardOutput::WriteInTime() {
  WriteKept();
  if (!myKept.empty()) myWriting.start();
}

}  // namespace corvane
