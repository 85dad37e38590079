#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include <QString>

// Names and reasons come from anybody. Where an operator reads them they are one line in which
// nothing is hidden, and two different texts never look alike: a line end is written as \n, a
// return as \r, a tab as \t, a backslash as \\, every other character that draws nothing, a blank
// that is not the plain one, or a mark that turns the direction of writing as \xHH, \uHHHH or
// \UHHHHHHHH.
namespace corvane {

// The text for standard output, as UTF-8. Costs next to nothing for plain ASCII.
std::string Escaped(std::string_view text);

// The text for the windows: past `maxLength` characters it is cut and ends in an ellipsis.
QString VisibleText(std::string_view text, std::size_t maxLength = 1000);

}  // namespace corvane
