#pragma once

#include <memory>
#include <string_view>

#include <libxml/tree.h>

namespace corvane {

struct XMLDocumentEnd {
  void operator()(xmlDoc* document) const { xmlFreeDoc(document); }
};
using XMLDocument = std::unique_ptr<xmlDoc, XMLDocumentEnd>;

// Parses a document with libxml2, in `encoding` or, where none is given, in the one that it says
// itself: nothing is fetched from anywhere, entities stay as they stand, the library's own limits
// on depth and size hold. CDATA sections become text. None when it is not well-formed.
XMLDocument ParseXML(std::string_view bytes, const char* encoding = nullptr);

// Text as the library's functions take it.
inline const xmlChar* AsXML(const char* text) {
  return reinterpret_cast<const xmlChar*>(text);
}

}  // namespace corvane
