#pragma once

namespace corvane {

// Suppresses irrelevant Qt warnings on standard error, for example about the missing runtime folder
// of a user who is not logged in. Call it before creating the application object.
void DropQtNoise();

}  // namespace corvane
