#include "updater/update_catalogue.h"

#include <string>

#include <gtest/gtest.h>

using namespace corvane;

namespace {

// An application's element around the values.
std::string App(const std::string& name, const std::string& values) {
  return "<App><AppName>" + name + "</AppName>" + values + "</App>";
}

std::string Nested(int depth) {
  std::string text;
  for (int level = 0; level < depth; ++level)
    text += "<a>";
  for (int level = 0; level < depth; ++level)
    text += "</a>";
  return text;
}

// Entities of ten times the one before.
std::string EntityBomb() {
  std::string document = "<!DOCTYPE r [<!ENTITY e0 'lollollol'>";
  for (int level = 1; level < 10; ++level) {
    const std::string before = "&e" + std::to_string(level - 1) + ";";
    document += "<!ENTITY e" + std::to_string(level) + " '";
    for (int copy = 0; copy < 10; ++copy)
      document += before;
    document += "'>";
  }
  return document + "]><r><a b='&e9;'/>" + App("Test", "") + "</r>";
}

}  // namespace

TEST(UpdateCatalogue, FindsTheFirstEntryOfTheNameOrNone) {
  const std::string build = "<CurrentBuildVersion>7</CurrentBuildVersion>";
  const std::string filler(1024 * 1024, ' ');
  const struct {
    const char* what;
    std::string document;
    const char* entry;  // version|download|changes
  } cases[] = {
      {"nothing", "", "none"},
      {"no entry", "<r>" + App("Other", build) + "</r>", "none"},
      {"no applications", "<r/>", "none"},
      {"no name", "<r><App>" + build + "</App>" + App("Test", "") + "</r>", "0.0.0.0||"},
      {"entry within an entry", "<r><Apps>" + App("Test", build) + "</Apps></r>", "none"},
      {"all values",
       "<?xml version='1.0'?><r>\n" + App("Other", "") +
           App("tEST",
               "<CurrentMajorVersion>1</CurrentMajorVersion><CurrentMinorVersion>2"
               "</CurrentMinorVersion><CurrentBugVersion>3</CurrentBugVersion><OtherGet>no"
               "</OtherGet><Get>\n http://h/x?a=1&amp;b=2\t</Get><Changes> a &lt;b&gt;\nc "
               "</Changes>" +
                   build) +
           "</r>",
       "1.2.3.7|http://h/x?a=1&b=2| a <b>\nc "},
      {"hostile numbers",
       "<r>" +
           App("Test",
               "<CurrentMajorVersion>99999999999</CurrentMajorVersion><CurrentMinorVersion>x"
               "</CurrentMinorVersion><CurrentBugVersion>-1</CurrentBugVersion>"
               "<CurrentBuildVersion> 7.9 b</CurrentBuildVersion>") +
           "</r>",
       "2147483647.0.-1.7||"},
      {"duplicates",
       "<r>" + App("Test", build + "<CurrentBuildVersion>8</CurrentBuildVersion>") +
           App("Test", "<Get>no</Get>") + "</r>",
       "0.0.0.7||"},
      {"first of two names", "<r>" + App("Other", "<AppName>Test</AppName>") + "</r>", "none"},
      {"CDATA", "<r>" + App("<![CDATA[Test]]>", "<Changes>a<![CDATA[<b>&]]>c</Changes>") + "</r>",
       "0.0.0.0||a<b>&c"},
      {"no text first", "<r>" + App("Test", "<Changes><!-- x -->a</Changes><Get/>") + "</r>",
       "0.0.0.0||"},
      {"entity of its own",
       "<!DOCTYPE r [<!ENTITY e 'text'>]><r>" + App("Test", "<Changes>a&e;b</Changes>") + "</r>",
       "0.0.0.0||a"},
      {"file of ours",
       "<!DOCTYPE r [<!ENTITY e SYSTEM 'file:///etc/hostname'>]><r>" +
           App("Test", "<Changes>&e;</Changes>") + "</r>",
       "0.0.0.0||"},
      {"entity bomb", EntityBomb(), "none"},
      {"too deep", "<r>" + App("Test", "") + Nested(100'000) + "</r>", "none"},
      {"truncated", "<r>" + App("Test", build), "none"},
      {"too large", "<r>" + App("Test", build) + "</r>" + filler, "none"},
      {"large", "<r>" + App("Test", build) + "</r>" + filler.substr(200), "0.0.0.7||"},
      {"no XML", std::string("\0\xFF<r>", 5), "none"},
  };
  for (const auto& row : cases) {
    const auto entry = FindInCatalogue(row.document, "Test", "Get");
    EXPECT_EQ(entry ? entry->version.FullVersion() + "|" + entry->download + "|" + entry->changes
                    : "none",
              row.entry)
        << row.what;
  }
}
