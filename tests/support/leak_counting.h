#pragma once

namespace corvane {

// Whether the leak sanitizer counts what is allocated from here on; without it, nothing.
void CountLeaks(bool on);

}  // namespace corvane
