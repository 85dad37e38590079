#pragma once

#include <memory>
#include <string_view>

#include <libxml/tree.h>

namespace corvane {

struct XMLDocumentEnd {
  void operator()(xmlDoc* document) const { xmlFreeDoc(document); }
};
using XMLDocument = std::unique_ptr<xmlDoc, XMLDocumentEnd>;

// Parses a document with libxml2, in `encoding` or, if that is null, in the encoding that the
// document declares. Fetches nothing, does not expand entities, and keeps the library's limits on
// depth and size. CDATA sections become text. Null if the document is not well-formed.
XMLDocument ParseXML(std::string_view bytes, const char* encoding = nullptr);

// Text in the library's character type.
inline const xmlChar* AsXML(const char* text) {
  return reinterpret_cast<const xmlChar*>(text);
}

}  // namespace corvane
