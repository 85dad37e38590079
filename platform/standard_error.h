#pragma once

#include <string_view>

namespace corvane {

// Writes the line, escaped and with a line end, to standard error. Never waits: if the reader does
// not keep up, the line is lost.
void WriteErrorLine(std::string_view line);

}  // namespace corvane
