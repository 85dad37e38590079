#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace corvane {

// Converts an XML document to UTF-8 by its byte order mark (UTF-8, UTF-16) or its declared encoding
// (ISO-8859-1 and windows-1252, both read as the latter, as browsers do). Any other document is
// taken for UTF-8. None if the mark announces UTF-16 and the bytes are invalid. The result may
// still declare the old encoding.
std::optional<std::string> XMLInUTF8(std::string_view document);

}  // namespace corvane
