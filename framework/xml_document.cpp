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
  return XMLDocument(xmlReadMemory(bytes.data(), static_cast<int>(bytes.size()), nullptr, encoding,
                                   XML_PARSE_NONET | XML_PARSE_NOBLANKS | XML_PARSE_NOCDATA |
                                       XML_PARSE_NOERROR | XML_PARSE_NOWARNING));
}

}  // namespace corvane
