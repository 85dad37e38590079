#pragma once

#include <chrono>

namespace corvane {

// For so long the lists gather what comes and goes before the view hears of it: it has at most
// fifty layouts a second then, however busy the server is, and nobody's eye notices.
inline constexpr std::chrono::milliseconds kGatheringTime{20};

}  // namespace corvane
