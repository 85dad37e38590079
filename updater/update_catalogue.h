#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace corvane {

// What the catalogue says about one application. The version of its newest release is text: "07"
// and "3b2" are shown as they are written.
struct CatalogueEntry {
  std::string majorVersion;
  std::string minorVersion;
  std::string bugVersion;
  std::string buildVersion;
  std::string download;  // address of its installer; may be empty
  std::string changes;

  // The number that is compared with the running build's.
  std::int32_t Build() const;
  // The four joined with ".".
  std::string FullVersion() const;

  bool operator==(const CatalogueEntry&) const = default;
};

// Finds the application's entry in a catalogue: an XML document whose root holds an element per
// application, whose child elements hold the values as text. `downloadElement` names the child
// that holds the installer's address. The first entry of the name counts, whatever its letter
// case, and in it the first child of each name; a missing part of the version reads as "0", another
// missing value as no text. Values but the changes come without blanks at their ends.
//
// The document may come from anybody, in one of the encodings of XMLInUTF8. None is found in one
// that is not well-formed, is larger than 1 MiB, declares anything in its DOCTYPE or goes beyond
// the XML library's limits.
std::optional<CatalogueEntry> FindInCatalogue(std::string_view document, std::string_view appName,
                                              const char* downloadElement);

}  // namespace corvane
