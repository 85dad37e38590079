#include "framework/standard_streams.h"

namespace corvane {

// Handles are not numbers that come again.
void OpenStandardStreams() {}

}  // namespace corvane
