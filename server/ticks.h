#pragma once

#include <cstdint>

namespace corvane {

// Time since the program started, in ticks of a sixtieth of a second. Wraps around after about
// 414 days.
std::int32_t Ticks();

}  // namespace corvane
