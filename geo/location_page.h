#pragma once

#include <string_view>

#include "geo/client_location.h"

namespace corvane {

// Reads a location page into `location`. A line that begins with "<meta" (letter case ignored) and
// holds two quoted texts is an entry: a name and a value. Lines end in LF or CRLF. "country",
// "regioncode", "city", "cityid" and "timezone" (letter case ignored) set the country, state, city,
// zip and time zone. Of several entries of one name the last counts; fields that the page does not
// name are unchanged. A "cityid" of four characters gets a "0" in front. Values are cut at 256
// bytes.
void ReadLocationPage(std::string_view page, ClientLocation& location);

}  // namespace corvane
