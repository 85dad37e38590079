#pragma once

#include <cstddef>
#include <string_view>

#include <QString>

namespace corvane {

// A text as the windows show it: always one line of plain text, whoever wrote it. Control
// characters, line and paragraph separators and the marks that turn the direction of writing are
// written out (\n, \t, \xHH, \uHHHH); past `maxLength` characters it is cut and ends in an
// ellipsis.
QString VisibleText(std::string_view text, std::size_t maxLength = 1000);

}  // namespace corvane
