#include "geo/location_page.h"

#include <string>

#include <gtest/gtest.h>

namespace corvane {
namespace {

std::string CityOf(std::size_t length, const std::string& end) {
  return "<meta name=\"city\" content=\"" + std::string(length, 'x') + end + "\">";
}

TEST(LocationPage, TakesTheQuotedEntriesOfMetaLines) {
  const struct {
    std::string page;
    std::string fields;  // country, state, city, zip, time zone; all were "old" before
  } cases[] = {
      {"", "old|old|old|old|old"},
      {"<META NAME=\"Country\" CONTENT=\"Norway\">\r\n<meta name=\"REGIONCODE\" content=\"03\">\r\n"
       "<meta name=\"city\" content=\"Oslo\">\n<meta name=\"timezone\" content=\"+1\">",
       "Norway|03|Oslo|old|+1"},
      {"<meta name=\"cityid\" content=\"1234\">", "old|old|old|01234|old"},
      {"<meta name=\"cityid\" content=\"123\">", "old|old|old|123|old"},
      {"<meta name=\"cityid\" content=\"12345\">", "old|old|old|12345|old"},
      {"<meta name=\"city\" content=\"a\">\n<meta name=\"city\" content=\"\">", "old|old||old|old"},
      {" <meta name=\"city\" content=\"indented\">", "old|old|old|old|old"},
      {CityOf(255, "\xC3\xBC"), "old|old|" + std::string(255, 'x') + "|old|old"},
      {CityOf(254, "\xC3\xBC"), "old|old|" + std::string(254, 'x') + "\xC3\xBC|old|old"},
      {"<metaname=\"city\" content=\"x\">", "old|old|old|old|old"},
      {"\t<meta\t name=\"city\" content=\"tabs\">", "old|old|tabs|old|old"},
      {"<meta \"city\" \"closed", "old|old|closed|old|old"},
      {"<meta \"city\" closed", "old|old|old|old|old"},
      {"<meta name=\"colour\" content=\"x\">\n\n\n\"\"\"\"", "old|old|old|old|old"},
  };
  for (const auto& row : cases) {
    ClientLocation location{"old", "old", "old", "old", "old", {}};
    ReadLocationPage(row.page, location);
    EXPECT_EQ(location.country + "|" + location.state + "|" + location.city + "|" + location.zip +
                  "|" + location.timeZone,
              row.fields)
        << row.page;
  }
}

}  // namespace
}  // namespace corvane
