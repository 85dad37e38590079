#pragma once

namespace corvane::ctl {

// From here to the program's end a console shows the bytes that are printed as the UTF-8 that they
// are.
void PrintUtf8();

}  // namespace corvane::ctl
