#pragma once

#include <cstddef>
#include <vector>

#include <QPointF>

namespace corvane::map {

// Points of a crowd are at most this many pixels from its middle, or from one of them.
inline constexpr int kCrowdRadius = 14;
inline constexpr std::size_t kMinCrowd = 11;

// Finds the crowds among points near a window: at least kMinCrowd that stand in one place. Returns
// the indexes of each crowd's points; a point is in one crowd at most. The order of the points
// decides which, so crowds stay as they are while their points move little.
std::vector<std::vector<std::size_t>> FindCrowds(const std::vector<QPointF>& points);

}  // namespace corvane::map
