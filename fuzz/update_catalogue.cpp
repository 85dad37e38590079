// Feeds documents to FindInCatalogue: a catalogue written from the entry that it finds reads back
// the same, in any letter case of the name and between other entries.

#include "updater/update_catalogue.h"

#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

using corvane::CatalogueEntry;

namespace {

constexpr const char* kDownload = "LinuxDownload";

std::string Escaped(std::string_view text) {
  std::string escaped;
  for (const char byte : text) {
    if (byte == '&' || byte == '<' || byte == '>' || byte == '\r') {
      escaped += "&#" + std::to_string(byte) + ";";
    } else {
      escaped += byte;
    }
  }
  return escaped;
}

std::string Element(const std::string& name, std::string_view text) {
  return "<" + name + ">" + Escaped(text) + "</" + name + ">";
}

std::string Application(const std::string& name, const CatalogueEntry& entry) {
  return "<a>" + Element("Changes", entry.changes) + Element(kDownload, entry.download) +
         Element("CurrentBuildVersion", entry.buildVersion) +
         Element("CurrentBugVersion", entry.bugVersion) +
         Element("CurrentMinorVersion", entry.minorVersion) +
         Element("CurrentMajorVersion", entry.majorVersion) + Element("AppName", name) + "</a>";
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // Written out again, a document is several times as large, and its size is limited.
  if (size > 100'000) return 0;
  const std::string_view document(reinterpret_cast<const char*>(data), size);
  const auto entry = corvane::FindInCatalogue(document, "CorvaneServer", kDownload);
  if (corvane::FindInCatalogue(document, "CORVANEserver", kDownload) != entry) std::abort();
  if (!entry) return 0;
  const std::string written = "<catalogue>" + Application("Other", {}) +
                              Application("corvaneSERVER", *entry) +
                              Application("CorvaneServer", {}) + "</catalogue>";
  if (corvane::FindInCatalogue(written, "CorvaneServer", kDownload) != entry) std::abort();
  return 0;
}
