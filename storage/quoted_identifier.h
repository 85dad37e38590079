#pragma once

#include <string>
#include <string_view>

namespace corvane {

// A table's or column's name as an SQL statement spells it, whatever characters it holds.
std::string QuotedIdentifier(std::string_view name);

}  // namespace corvane
