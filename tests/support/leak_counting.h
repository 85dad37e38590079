#pragma once

namespace corvane {

// Lets the leak sanitizer, if there is one, count or ignore allocations from here on.
void CountLeaks(bool on);

}  // namespace corvane
