#pragma once

#include <string_view>

#include "geo/client_location.h"

namespace corvane {

// Reads a location page into `location`. A line that begins with "<meta" (letter case ignored) and
// holds two quoted texts is an entry, the first its name and the second its value; lines end in LF
// or CRLF. "country", "regioncode", "city", "cityid" and "timezone" (letter case ignored) set the
// country, state, city, zip and time zone; of several entries of one name the last counts, and
// what the page does not name stays as it is. A "cityid" of four characters gets a "0" in front.
// Values are kept up to 256 bytes.
void ReadLocationPage(std::string_view page, ClientLocation& location);

}  // namespace corvane
