#include "framework/xml_document.h"

#include <libxml/parser.h>

namespace corvane {
namespace {

void IgnoreError(void* /*context*/, const char* /*format*/, ...) {}

// Moves the next bytes of a text, a string_view, into the library's buffer.
int TakePiece(void* text, char* buffer, int size) {
  auto& rest = *static_cast<std::string_view*>(text);
  const std::size_t count = rest.copy(buffer, static_cast<std::size_t>(size));
  rest.remove_prefix(count);
  return static_cast<int>(count);
}

}  // namespace

XMLDocument ParseXML(std::string_view bytes, const char* encoding) {
  // Some errors, of encodings for one, are printed in spite of the options.
  xmlSetGenericErrorFunc(nullptr, IgnoreError);
  int options = XML_PARSE_NONET | XML_PARSE_NOBLANKS | XML_PARSE_NOCDATA | XML_PARSE_NOERROR |
                XML_PARSE_NOWARNING;
  // Or a document that names an encoding that this build of the library lacks would fail.
  if (encoding != nullptr) options |= XML_PARSE_IGNORE_ENC;
  // In pieces: the library's limit for a piece of 10 MB would count for the whole otherwise.
  return XMLDocument(xmlReadIO(TakePiece, nullptr, &bytes, nullptr, encoding, options));
}

}  // namespace corvane
