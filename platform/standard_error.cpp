#include "platform/standard_error.h"

#include "framework/visible_text.h"
#include "platform/standard_streams.h"

namespace corvane {

void WriteErrorLine(std::string_view line) {
  WriteWithoutWaiting(StandardStream::Error, Escaped(line) + '\n');
}

}  // namespace corvane
