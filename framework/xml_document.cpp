#include "framework/xml_document.h"

#include <limits>

#include <libxml/parser.h>

namespace corvane {
namespace {

void IgnoreError(void* /*context*/, const char* /*format*/, ...) {}

}  // namespace

XMLDocument ParseXML(std::string_view bytes, const char* encoding) {
  if (bytes.size() > std::numeric_limits<int>::max()) return nullptr;
  // Some errors, of encodings for one, are printed in spite of the options.
  xmlSetGenericErrorFunc(nullptr, IgnoreError);
  int options = XML_PARSE_NONET | XML_PARSE_NOBLANKS | XML_PARSE_NOCDATA | XML_PARSE_NOERROR |
                XML_PARSE_NOWARNING;
  // Or a document that names an encoding that this build of the library lacks would fail.
  if (encoding != nullptr) options |= XML_PARSE_IGNORE_ENC;
  return XMLDocument(
      xmlReadMemory(bytes.data(), static_cast<int>(bytes.size()), nullptr, encoding, options));
}

}  // namespace corvane
