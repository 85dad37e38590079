#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include <QString>

// Names and reasons come from strangers. An operator sees them as one line, unchanged except for
// misleading characters. Line feed, carriage return and tab are shown as \n, \r and \t. Other
// controls, direction marks, invisible characters and blanks other than U+0020 are shown as \xHH,
// \uHHHH or \UHHHHHHHH. U+200C, U+200D, U+FE0F, U+00A0 and U+3000 stay between visible characters,
// where people write them, and U+FE0F stays after a symbol. A backslash is not escaped.
namespace corvane {

// A line for standard output, as UTF-8. Plain ASCII is copied.
std::string Escaped(std::string_view text);

// Appends the escaped text to a line, up to a line length of `maxBytes`. Returns whether all of it
// fitted.
bool AppendEscaped(std::string& line, std::string_view text, std::size_t maxBytes);

// JSON whose strings decode to the same texts, with misleading characters as JSON escapes.
std::string EscapedJson(std::string_view json);

// A name or reason for a list: blanks at its ends are escaped, too. A text over `maxLength`
// characters is cut and ends in an ellipsis.
QString VisibleText(std::string_view text, std::size_t maxLength = 1000);

}  // namespace corvane
