#pragma once

#include "app/line_writer.h"

namespace corvane {

// Standard output as a log.
class StandardOutput : public LineWriter {
 public:
  StandardOutput()
      : LineWriter([](std::string_view bytes) {
          return WriteWithoutWaiting(StandardStream::Output, bytes);
        }) {}
};

}  // namespace corvane
