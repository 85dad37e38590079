#pragma once

#include <string_view>

namespace corvane {

// Writes the line, escaped and with a line end, to standard error. Never waits: a reader that does
// not keep up misses it.
void WriteErrorLine(std::string_view line);

}  // namespace corvane
