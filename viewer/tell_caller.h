#pragma once

#include <QString>

namespace corvane::viewer {

// Shows whoever has started the program a text in the place of its window: help, or what is wrong
// if the exit code is not 0.
void TellCaller(const QString& text, int exitCode);

}  // namespace corvane::viewer
