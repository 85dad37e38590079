#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include <QString>

// Names and reasons come from anybody. Where an operator reads them they are one line, as it was
// written but for what could mislead: a line end is written as \n, a return as \r, a tab as \t, and
// other controls, marks that turn the direction of writing, characters that draw nothing, and
// blanks other than the plain one as \xHH, \uHHHH or \UHHHHHHHH. U+200C, U+200D, U+FE0F, U+00A0 and
// U+3000 stay between visible characters, where people write them, and so does U+FE0F behind a
// symbol. A backslash is a backslash.
namespace corvane {

// A line for standard output, as UTF-8. Costs next to nothing for plain ASCII.
std::string Escaped(std::string_view text);

// Appends as much of the text to a line as leaves that at `most` bytes; whether that is all of it.
bool AppendEscaped(std::string& line, std::string_view text, std::size_t most);

// JSON whose strings decode to the same texts, with what misleads in them escaped as JSON does.
std::string EscapedJson(std::string_view json);

// A name or reason for a list: plain blanks that it begins or ends with are written out, too. Past
// `maxLength` characters it is cut and ends in an ellipsis.
QString VisibleText(std::string_view text, std::size_t maxLength = 1000);

}  // namespace corvane
