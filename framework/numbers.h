#pragma once

#include <cstdint>
#include <string_view>

namespace corvane {

// The number at the start of the text: the longest decimal prefix (sign, digits, fraction,
// exponent) after leading blanks, or 0 if there is none. A value beyond double's range becomes an
// infinity of the same sign. Hexadecimal numbers, "inf" and "nan" are not read.
double NumberFromText(std::string_view text);

// The same number without its fraction, clamped to 32 bits.
std::int32_t Int32FromText(std::string_view text);

// Whether the whole text, apart from blanks at both ends, is one decimal number.
bool IsNumeric(std::string_view text);

}  // namespace corvane
