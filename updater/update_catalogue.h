#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace corvane {

// The catalogue's entry for one application. The version of its newest release is text: "07" and
// "3b2" are shown as written.
struct CatalogueEntry {
  std::string majorVersion;
  std::string minorVersion;
  std::string bugVersion;
  std::string buildVersion;
  std::string download;  // address of its installer; may be empty
  std::string changes;

  // The number to compare with the running build's.
  std::int32_t Build() const;
  // The four joined with ".".
  std::string FullVersion() const;

  bool operator==(const CatalogueEntry&) const = default;
};

// Finds the application's entry in a catalogue: an XML document whose root holds an element per
// application, whose child elements hold the values as text. `downloadElement` names the child
// that holds the installer's address. The first entry of the name counts (letter case ignored), and
// in it the first child of each name. A missing part of the version reads as "0", any other missing
// value as empty. Values are trimmed, except for the changes.
//
// The document is not trusted; its encoding is one of XMLInUTF8's. None is found in a document that
// is not well-formed, is larger than 1 MiB, declares anything in its DOCTYPE or exceeds the XML
// library's limits.
std::optional<CatalogueEntry> FindInCatalogue(std::string_view document, std::string_view appName,
                                              const char* downloadElement);

}  // namespace corvane
