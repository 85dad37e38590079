#include "updater/update_catalogue.h"

#include <string>

#include <gtest/gtest.h>

namespace corvane {
namespace {

// A catalogue with one entry for "Test" among others.
std::string Catalogue(const std::string& values, const std::string& others = {}) {
  return "<r>" + others + "<App><AppName>tEST</AppName>" + values + "</App></r>";
}

// ASCII as UTF-16, with the high byte first or last.
std::string AsUTF16(const std::string& text, bool highFirst) {
  std::string result;
  for (const char byte : text)
    result += highFirst ? std::string{'\0', byte} : std::string{byte, '\0'};
  return result;
}

std::string Nested(std::size_t depth) {
  std::string text;
  for (std::size_t level = 0; level < depth; ++level)
    text.insert(3 * level, "<a></a>");
  return text;
}

TEST(UpdateCatalogue, FindsTheFirstEntryOfTheNameOrNone) {
  const std::string build = "<CurrentBuildVersion>7</CurrentBuildVersion>";
  const std::string filler(1024 * 1024, ' ');
  const struct {
    std::string document;
    std::string entry;  // version|download|changes
  } cases[] = {
      {"", "none"},
      {"<r><App><AppName>Other</AppName></App></r>", "none"},
      {Catalogue(build, "<App>" + build + "</App>") + "\n", "0.0.0.7||"},
      {"<r>" + Catalogue(build) + "</r>", "none"},
      {Catalogue("<CurrentMajorVersion>1</CurrentMajorVersion><CurrentMinorVersion>2"
                 "</CurrentMinorVersion><CurrentBugVersion>3</CurrentBugVersion><WinGet>no"
                 "</WinGet><Get>\n http://h/x?a=1&amp;b=2\t</Get><Changes> &lt;b&gt;\n</Changes>" +
                 build),
       "1.2.3.7|http://h/x?a=1&b=2| <b>\n"},
      {Catalogue("<CurrentMajorVersion>99999999999</CurrentMajorVersion><CurrentMinorVersion>07x"
                 "</CurrentMinorVersion><CurrentBuildVersion> -7.9 b </CurrentBuildVersion>"),
       "99999999999.07x.0.-7.9 b||"},
      {Catalogue(build + "<CurrentBuildVersion>8</CurrentBuildVersion></App><App><AppName>Test"
                         "</AppName><Get>second</Get>"),
       "0.0.0.7||"},
      {Catalogue("<Changes>a<![CDATA[<b>&]]>c</Changes>"), "0.0.0.0||a<b>&c"},
      {Catalogue("<Changes><!-- x -->a</Changes><Get/>"), "0.0.0.0||"},
      {"<!DOCTYPE r SYSTEM 'http://h/r.dtd'>" + Catalogue(build), "0.0.0.7||"},
      {"<!DOCTYPE r [<!ENTITY a 'b'>]>" + Catalogue(build), "none"},
      {"<r><!ELEMENT a ANY></r>", "none"},
      {"<?xml version='1.0'?><!-- <!DOCTYPE " + filler.substr(0, 5000) + "-->" + Catalogue(build),
       "0.0.0.7||"},
      {Catalogue("<Changes><![CDATA[<!" + std::string(5000, 'x') + "]]></Changes>"),
       "0.0.0.0||<!" + std::string(5000, 'x')},
      {Catalogue("<a " + filler.substr(0, 5000) + "/>"), "none"},
      {Catalogue("<a b='>' " + filler.substr(0, 5000) + "/>"), "none"},
      {"<?x > <!-- ?>" + Catalogue("<a " + filler.substr(0, 5000) + "/>"), "none"},
      {Catalogue("<Changes>\xE9</Changes>"), "none"},
      {"\xEF\xBB\xBF" + Catalogue("<Changes>é</Changes>"), "0.0.0.0||é"},
      {"<?xml version='1.0' encoding='iso-8859-1'?>" + Catalogue("<Changes>\xE9</Changes>"),
       "0.0.0.0||é"},
      {"<?xml version=\"1.0\" encoding = \"windows-1252\" ?>" +
           Catalogue("<Changes>\x80\x9F\xE9</Changes>"),
       "0.0.0.0||€Ÿé"},
      {"\xFF\xFE" + AsUTF16("<?xml version='1.0' encoding='UTF-16'?>" + Catalogue(build), false),
       "0.0.0.7||"},
      {"\xFE\xFF" + AsUTF16(Catalogue(build), true), "0.0.0.7||"},
      {"\xFE\xFF" + AsUTF16(Catalogue(build), true) + " ", "none"},
      {"\xFE\xFF" + AsUTF16("<!DOCTYPE r [<!ENTITY a 'b'>]>" + Catalogue(build), true), "none"},
      {"<?xml version='1.0' encoding='UTF-7'?>" + Catalogue("<Changes>+ADw-</Changes>"),
       "0.0.0.0||+ADw-"},
      {Catalogue(Nested(100)), "0.0.0.0||"},
      {Catalogue(Nested(1000)), "none"},
      {Catalogue(build).substr(0, 80), "none"},
      {Catalogue(build) + filler.substr(200), "0.0.0.7||"},
      {Catalogue(build) + filler, "none"},
  };
  for (const auto& row : cases) {
    const auto entry = FindInCatalogue(row.document, "Test", "Get");
    EXPECT_EQ(entry ? entry->FullVersion() + "|" + entry->download + "|" + entry->changes : "none",
              row.entry)
        << row.document.substr(0, 500);
  }
}

}  // namespace
}  // namespace corvane
