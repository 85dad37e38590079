#include "geo/location_page.h"

#include "framework/text.h"

namespace corvane {
namespace {

// Removes the next line and its end from `rest`; returns it without the end.
std::string_view TakeLine(std::string_view& rest) {
  const std::size_t end = rest.find('\n');
  std::string_view line = rest.substr(0, end);
  rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
  if (line.ends_with('\r')) line.remove_suffix(1);
  return line;
}

void SetEntry(ClientLocation& location, std::string_view name, std::string_view value) {
  value = Beginning(value, ClientLocation::kMaxTextBytes);
  if (SameText(name, "country")) {
    location.country = value;
  } else if (SameText(name, "regioncode")) {
    location.state = value;
  } else if (SameText(name, "city")) {
    location.city = value;
  } else if (SameText(name, "cityid")) {
    // Four-digit numbers have lost their leading zero.
    location.zip = std::string(DisplayText(value).size() == 4 ? "0" : "").append(value);
  } else if (SameText(name, "timezone")) {
    location.timeZone = value;
  }
}

}  // namespace

void ReadLocationPage(std::string_view page, ClientLocation& location) {
  while (!page.empty()) {
    const std::string_view line = TakeLine(page);
    if (!SameText(Trimmed(NthField(line, ' ', 1)), "<meta")) continue;
    if (CountFields(line, '"') < 4) continue;
    SetEntry(location, NthField(line, '"', 2), NthField(line, '"', 4));
  }
}

}  // namespace corvane
