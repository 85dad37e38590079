#include "framework/standard_error.h"

#include "framework/standard_output.h"
#include "framework/standard_streams.h"

namespace corvane {

void WriteErrorLine(std::string_view line) {
  WriteWithoutWaiting(StandardStream::Error, Escaped(line) + '\n');
}

}  // namespace corvane
