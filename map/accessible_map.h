#pragma once

namespace corvane::map {

// Gives maps, which are QGraphicsViews, a role for screen readers. Call it before one is made.
void InstallAccessibleMap();

}  // namespace corvane::map
