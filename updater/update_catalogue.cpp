#include "updater/update_catalogue.h"

#include <cstddef>

#include "framework/numbers.h"
#include "framework/text.h"
#include "framework/xml_document.h"

namespace corvane {
namespace {

constexpr std::size_t kMaxDocumentBytes = 1024 * 1024;

// The text at the start of the element's child of that name: what follows a comment, an element or
// an entity in there is not part of it.
std::string_view ChildText(const xmlNode& element, const char* name) {
  const xmlNode* child = element.children;
  while (child != nullptr &&
         (child->type != XML_ELEMENT_NODE || xmlStrEqual(child->name, AsXML(name)) == 0)) {
    child = child->next;
  }
  const xmlNode* const first = child == nullptr ? nullptr : child->children;
  if (first == nullptr || first->type != XML_TEXT_NODE || first->content == nullptr) return {};
  return reinterpret_cast<const char*>(first->content);
}

}  // namespace

std::optional<CatalogueEntry> FindInCatalogue(std::string_view document, std::string_view appName,
                                              const char* downloadElement) {
  if (document.size() > kMaxDocumentBytes) return std::nullopt;
  const XMLDocument parsed = ParseXML(document);
  const xmlNode* const root = xmlDocGetRootElement(parsed.get());
  if (root == nullptr) return std::nullopt;
  for (const xmlNode* node = root->children; node != nullptr; node = node->next) {
    if (node->type != XML_ELEMENT_NODE || !SameText(ChildText(*node, "AppName"), appName)) continue;
    const auto number = [&](const char* name) { return Int32FromText(ChildText(*node, name)); };
    return CatalogueEntry{{number("CurrentMajorVersion"), number("CurrentMinorVersion"),
                           number("CurrentBugVersion"), number("CurrentBuildVersion")},
                          std::string(Trimmed(ChildText(*node, downloadElement))),
                          std::string(ChildText(*node, "Changes"))};
  }
  return std::nullopt;
}

}  // namespace corvane
