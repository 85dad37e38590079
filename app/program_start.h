#pragma once

#include <optional>

namespace corvane {

// What has to be done before there is an application object of Qt's.
void SetUpProcess();

// Answers a caller who asked for help or the version, or whose words are not understood: the exit
// code then. Needs a QCoreApplication.
std::optional<int> AnswerCaller();

}  // namespace corvane
