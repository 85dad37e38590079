#include "framework/standard_error.h"

#include "framework/standard_streams.h"
#include "framework/visible_text.h"

namespace corvane {

void WriteErrorLine(std::string_view line) {
  WriteWithoutWaiting(StandardStream::Error, Escaped(line) + '\n');
}

}  // namespace corvane
