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
  // Some errors, for example about encodings, are printed despite the options.
  xmlSetGenericErrorFunc(nullptr, IgnoreError);
  int options = XML_PARSE_NONET | XML_PARSE_NOBLANKS | XML_PARSE_NOCDATA | XML_PARSE_NOERROR |
                XML_PARSE_NOWARNING;
  // Otherwise a document that declares an encoding unknown to this build of the library fails.
  if (encoding != nullptr) options |= XML_PARSE_IGNORE_ENC;
  // In pieces: the library limits one piece to 10 MB.
  return XMLDocument(xmlReadIO(TakePiece, nullptr, &bytes, nullptr, encoding, options));
}

}  // namespace corvane
