#include "updater/update_catalogue.h"

#include <algorithm>
#include <cstddef>

#include "framework/numbers.h"
#include "framework/text.h"
#include "framework/xml_document.h"
#include "updater/xml_encoding.h"

namespace corvane {
namespace {

constexpr std::size_t kMaxDocumentBytes = 1024 * 1024;
constexpr std::size_t kMaxTagBytes = 4096;

// The position after the next `end`; the end of the document if there is none.
std::size_t Behind(std::string_view document, std::string_view end, std::size_t begin) {
  const std::size_t found = document.find(end, begin);
  return found == std::string_view::npos ? document.size() : found + end.size();
}

// The length of the tag at the start of the text; none if it is too long. A quoted ">" does not end
// it.
std::optional<std::size_t> TagLength(std::string_view text) {
  char quote = 0;
  for (std::size_t i = 0; i < std::min(text.size(), kMaxTagBytes); ++i) {
    const char byte = text[i];
    if (quote != 0) {
      if (byte == quote) quote = 0;
    } else if (byte == '"' || byte == '\'') {
      quote = byte;
    } else if (byte == '>') {
      return i + 1;
    }
  }
  return std::nullopt;
}

// Whether parsing the document is fast. The parser's time is quadratic in the number of attributes
// of a tag and of declarations in a DOCTYPE's brackets; a DOCTYPE without brackets is harmless.
bool IsQuicklyParsed(std::string_view document) {
  for (std::size_t at = document.find('<'); at < document.size(); at = document.find('<', at)) {
    const std::string_view rest = document.substr(at);
    if (rest.starts_with("<!--")) {
      at = Behind(document, "-->", at + 4);
    } else if (rest.starts_with("<![CDATA[")) {
      at = Behind(document, "]]>", at);
    } else if (rest.starts_with("<?")) {
      at = Behind(document, "?>", at + 2);
    } else {
      const auto length = TagLength(rest);
      if (!length) return false;
      const std::string_view tag = rest.substr(0, *length);
      const bool namesTheType =
          tag.starts_with("<!DOCTYPE") && tag.find('[') == std::string_view::npos;
      if (tag.starts_with("<!") && !namesTheType) return false;
      at += *length;
    }
  }
  return true;
}

// The text at the start of the element's child of that name, up to the first comment, element or
// entity in it.
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
  const std::optional<std::string> read = XMLInUTF8(document);
  if (!read || !IsQuicklyParsed(*read)) return std::nullopt;
  // In another encoding the parser could see tags that were not checked.
  const XMLDocument parsed = ParseXML(*read, "UTF-8");
  const xmlNode* const root = xmlDocGetRootElement(parsed.get());
  if (root == nullptr) return std::nullopt;
  for (const xmlNode* node = root->children; node != nullptr; node = node->next) {
    if (node->type != XML_ELEMENT_NODE || !SameText(ChildText(*node, "AppName"), appName)) continue;
    const auto value = [node](const char* name) {
      return std::string(Trimmed(ChildText(*node, name)));
    };
    const auto number = [&value](const char* name) {
      const std::string text = value(name);
      return text.empty() ? "0" : text;
    };
    return CatalogueEntry{number("CurrentMajorVersion"), number("CurrentMinorVersion"),
                          number("CurrentBugVersion"),   number("CurrentBuildVersion"),
                          value(downloadElement),        std::string(ChildText(*node, "Changes"))};
  }
  return std::nullopt;
}

std::int32_t CatalogueEntry::Build() const {
  return Int32FromText(buildVersion);
}

std::string CatalogueEntry::FullVersion() const {
  return majorVersion + "." + minorVersion + "." + bugVersion + "." + buildVersion;
}

}  // namespace corvane
