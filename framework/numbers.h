#pragma once

#include <cstdint>
#include <string_view>

namespace corvane {

// The number at the start of the text: the longest decimal prefix (sign, digits, fraction,
// exponent) after leading blanks, or 0 when there is none. A value beyond double's range is an
// infinity of its sign. No hexadecimal, infinity or NaN is read.
double NumberFromText(std::string_view text);

// The same number without its fraction, clamped to 32 bits.
std::int32_t Int32FromText(std::string_view text);

// Whether the whole text, blanks at both ends aside, is one decimal number.
bool IsNumeric(std::string_view text);

}  // namespace corvane
