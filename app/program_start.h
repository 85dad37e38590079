#pragma once

#include <optional>

namespace corvane {

// Prepares the process; call it before Qt's application object is made.
void SetUpProcess();

// Handles the command line. Returns an exit code if it asked for help or the version, or was wrong.
// Needs a QCoreApplication.
std::optional<int> AnswerCaller();

}  // namespace corvane
