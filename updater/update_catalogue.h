#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "updater/version.h"

namespace corvane {

// What the catalogue says about one application.
struct CatalogueEntry {
  Version version;       // of the newest release
  std::string download;  // address of its installer, without blanks at the ends; may be empty
  std::string changes;

  bool operator==(const CatalogueEntry&) const = default;
};

// Finds the application's entry in a catalogue: an XML document whose root holds an element per
// application, whose child elements hold the values as text. `downloadElement` names the child
// that holds the installer's address. The first entry of the name counts, whatever its letter
// case, and in it the first child of each name; a missing value reads as 0 or as no text.
//
// The document may come from anybody. None is found in one that is not well-formed, is larger than
// 1 MiB or goes beyond the XML library's limits.
std::optional<CatalogueEntry> FindInCatalogue(std::string_view document, std::string_view appName,
                                              const char* downloadElement);

}  // namespace corvane
