#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace corvane {

// The XML document in UTF-8, by the mark at its start (UTF-8, UTF-16) or by the encoding that it
// declares: ISO-8859-1 or windows-1252, which are read alike, as browsers do. Any other is taken
// for UTF-8. None where the bytes are no UTF-16 though the mark says so. The result may still
// declare what the document was in.
std::optional<std::string> XMLInUTF8(std::string_view document);

}  // namespace corvane
