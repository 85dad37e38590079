#pragma once

namespace corvane {

// Whether somebody may be looking; after QApplication was made.
bool HasDisplay();

}  // namespace corvane
