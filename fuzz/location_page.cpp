// Feeds pages to ReadLocationPage: reading line by line gives the same as reading at once, and only
// fields that the page names change.

#include "geo/location_page.h"

#include <cstdint>
#include <cstdlib>
#include <string_view>

using corvane::ClientLocation;

namespace {

bool AreSame(const ClientLocation& left, const ClientLocation& right) {
  return left.country == right.country && left.state == right.state && left.city == right.city &&
         left.zip == right.zip && left.timeZone == right.timeZone;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view page(reinterpret_cast<const char*>(data), size);
  const ClientLocation before{"a", "b", "c", "d", "e", {}};
  ClientLocation whole = before;
  corvane::ReadLocationPage(page, whole);

  ClientLocation lines = before;
  for (std::size_t begin = 0; begin < page.size();) {
    const std::size_t end = page.find('\n', begin);
    corvane::ReadLocationPage(page.substr(begin, end - begin), lines);
    begin = end == std::string_view::npos ? page.size() : end + 1;
  }
  if (!AreSame(whole, lines)) std::abort();
  if (page.find('"') == std::string_view::npos && !AreSame(whole, before)) std::abort();
  return 0;
}
