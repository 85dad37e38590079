#pragma once

namespace corvane::ctl {

// Makes the console take printed bytes as UTF-8 until the program ends.
void PrintUtf8();

}  // namespace corvane::ctl
