#include "framework/numbers.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <system_error>

#include "framework/text.h"

namespace corvane {

namespace {

constexpr bool IsDigit(char byte) {
  return byte >= '0' && byte <= '9';
}

constexpr bool IsSign(char byte) {
  return byte == '+' || byte == '-';
}

std::size_t SkipDigits(std::string_view text, std::size_t at) {
  while (at < text.size() && IsDigit(text[at]))
    ++at;
  return at;
}

// The decimal number that a text starts with, in parts. No number: an empty mantissa.
struct Decimal {
  bool negative = false;
  std::string_view mantissa;   // digits with at most one point
  std::string_view exponent;   // sign and digits, empty if there is none
  std::string_view magnitude;  // all but the sign
  std::size_t length = 0;      // of all of it
};

Decimal ReadDecimal(std::string_view text) {
  Decimal number;
  const std::size_t start = !text.empty() && IsSign(text[0]) ? 1 : 0;
  number.negative = start == 1 && text[0] == '-';
  std::size_t at = SkipDigits(text, start);
  std::size_t digits = at - start;
  if (at < text.size() && text[at] == '.') {
    const std::size_t end = SkipDigits(text, at + 1);
    digits += end - at - 1;
    at = end;
  }
  if (digits == 0) return number;
  number.mantissa = text.substr(start, at - start);
  if (at < text.size() && (text[at] == 'e' || text[at] == 'E')) {
    const bool isSigned = at + 1 < text.size() && IsSign(text[at + 1]);
    const std::size_t firstDigit = at + (isSigned ? 2 : 1);
    const std::size_t end = SkipDigits(text, firstDigit);
    if (end > firstDigit) {
      number.exponent = text.substr(at + 1, end - at - 1);
      at = end;
    }
  }
  number.magnitude = text.substr(start, at - start);
  number.length = at;
  return number;
}

// The exponent as a number, held to a range in which no sum overflows.
std::int64_t ExponentOf(const Decimal& number) {
  constexpr std::int64_t kLimit = std::numeric_limits<std::int32_t>::max();
  const bool negative = number.exponent.starts_with('-');
  std::int64_t exponent = 0;
  for (const char byte : number.exponent) {
    if (IsDigit(byte)) exponent = std::min(exponent * 10 + (byte - '0'), kLimit);
  }
  return negative ? -exponent : exponent;
}

// Whether a number outside double's range is too large; otherwise it is too small.
bool IsTooLarge(const Decimal& number) {
  const std::size_t leading = number.mantissa.find_first_of("123456789");
  if (leading == std::string_view::npos) return false;
  const std::size_t point = std::min(number.mantissa.find('.'), number.mantissa.size());
  return static_cast<std::int64_t>(point) - static_cast<std::int64_t>(leading) +
             ExponentOf(number) >
         0;
}

double ValueOf(const Decimal& number) {
  const char* const start = number.magnitude.data();
  double value = 0;
  const auto [end, error] = std::from_chars(start, start + number.magnitude.size(), value);
  if (error == std::errc::result_out_of_range) {
    value = IsTooLarge(number) ? std::numeric_limits<double>::infinity() : 0;
  }
  return number.negative ? -value : value;
}

}  // namespace

double NumberFromText(std::string_view text) {
  const Decimal number = ReadDecimal(Trimmed(text));
  return number.mantissa.empty() ? 0 : ValueOf(number);
}

std::int32_t Int32FromText(std::string_view text) {
  // Nearly every text is a short whole number: up to nine digits fit and need no double.
  constexpr std::size_t kSafeDigits = 9;
  std::size_t at = !text.empty() && IsSign(text[0]) ? 1 : 0;
  const std::size_t start = at;
  std::int32_t value = 0;
  for (; at < text.size() && IsDigit(text[at]) && at - start < kSafeDigits; ++at) {
    value = value * 10 + (text[at] - '0');
  }
  if (at == text.size() && at > start) return text[0] == '-' ? -value : value;

  const double number = NumberFromText(text);
  if (number >= std::numeric_limits<std::int32_t>::max()) {
    return std::numeric_limits<std::int32_t>::max();
  }
  if (number <= std::numeric_limits<std::int32_t>::min()) {
    return std::numeric_limits<std::int32_t>::min();
  }
  return static_cast<std::int32_t>(number);
}

bool IsNumeric(std::string_view text) {
  const std::string_view trimmed = Trimmed(text);
  const Decimal number = ReadDecimal(trimmed);
  return !number.mantissa.empty() && number.length == trimmed.size();
}

}  // namespace corvane
