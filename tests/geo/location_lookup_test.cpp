#include "geo/location_lookup.h"

#include <fstream>

#include <QFile>
#include <QTemporaryDir>
#include <gmock/gmock.h>

#include "tests/support/mmdb_bytes.h"
#include "tests/support/test_client.h"
#include "tests/support/web_server.h"

namespace corvane {
namespace {

using testing::HasSubstr;

const std::string kPage = "/IpLocator.htm?GetLocation&template=php3.txt&IpAddress=";
const std::string kFlag = "/flag.php?ip=";

class LocationLookupTest : public testing::Test {
 protected:
  LocationLookupTest() { lookup.SetServices(server.Address("/"), server.Address()); }

  ClientLocation Find(const std::string& address, const ClientLocation& known = {}) {
    std::optional<ClientLocation> location;
    const auto transfer =
        lookup.Find(address, known, [&](const ClientLocation& found) { location = found; });
    EXPECT_TRUE(PumpUntil([&] { return location.has_value(); }));
    return location.value_or(ClientLocation{});
  }
  void WriteFlag(const std::string& bytes) {
    std::ofstream(flagFile.toStdString(), std::ios::binary) << bytes;
  }
  bool FlagFileHolds(const std::string& bytes) {
    return PumpUntil([&] {
      QFile file(flagFile);
      return file.open(QIODevice::ReadOnly) && file.readAll().toStdString() == bytes;
    });
  }

  QTemporaryDir folder;
  const QString flagFile = folder.filePath("cv_flag.gif");
  WebServer server;
  LocationLookup lookup{"Corvane-Test/1.2", folder.path()};
};

TEST_F(LocationLookupTest, TextsComeFromThePageAndThePictureIsThePreviousClients) {
  server.answers[kPage + "192.0.2.1"] = {OkReply("<meta name=\"city\" content=\"Oslo\">\r\n")};
  server.answers[kFlag + "192.0.2.1"] = {OkReply("a flag")};
  server.answers[kFlag + "192.0.2.2"] = {OkReply("another")};

  const ClientLocation first = Find("192.0.2.1");
  EXPECT_EQ(first.city, "Oslo");
  EXPECT_TRUE(first.flag.isEmpty());
  ASSERT_TRUE(FlagFileHolds("a flag"));

  // Without a page, too.
  const ClientLocation second = Find("192.0.2.2");
  EXPECT_EQ(second.city, "");
  EXPECT_EQ(second.flag, "a flag");
  ASSERT_TRUE(FlagFileHolds("another"));
  ClientLocation known;
  known.zip = "1";
  const ClientLocation third = Find("192.0.2.1", known);
  EXPECT_EQ(third.city, "Oslo");
  EXPECT_EQ(third.zip, "1");
  EXPECT_EQ(third.flag, "another");

  EXPECT_THAT(server.requests.front(), HasSubstr("User-Agent: Corvane-Test/1.2\r\n"));
  Find("a b&c");
  EXPECT_TRUE(PumpUntil([&] {
    return server.requests.back().starts_with("GET " + kFlag + "a%20b%26c HTTP/1.1\r\n");
  })) << server.requests.back();
  // More downloads in sequence than may run at a time.
  lookup.SetServices("", server.Address());
  for (int i = 0; i < 70; ++i) {
    const auto before = server.requests.size();
    Find("192.0.2.1");
    ASSERT_TRUE(PumpUntil([&] { return server.requests.size() > before; })) << i;
  }
}

TEST_F(LocationLookupTest, FlagThatIsEmptyOrTooLongLeavesTheKnownOne) {
  lookup.SetServices("", server.Address());
  ClientLocation known;
  known.flag = "known";
  for (const std::string& bytes : {std::string(), std::string(1024 * 1024 + 1, 'x')}) {
    WriteFlag(bytes);
    EXPECT_EQ(Find("192.0.2.1", known).flag, "known") << bytes.size();
  }
}

TEST_F(LocationLookupTest, ServiceWithoutAnAddressIsNotAsked) {
  WriteFlag("a flag");
  lookup.SetServices(server.Address(), "");
  EXPECT_TRUE(Find("192.0.2.1").flag.isEmpty());
  EXPECT_EQ(server.requests.size(), 1);
  lookup.SetServices("", "");
  bool isFound = false;
  EXPECT_EQ(lookup.Find("192.0.2.1", {}, [&](const ClientLocation&) { isFound = true; }), nullptr);
  EXPECT_TRUE(isFound);
  EXPECT_EQ(server.requests.size(), 1);
}

TEST_F(LocationLookupTest, DatabaseIsUsedIfNoLocatorIsSet) {
  std::vector<std::string> logged;
  lookup.Logged = [&logged](const std::string& text) { logged.push_back(text); };
  const QString file = folder.filePath("places.mmdb");
  const std::string oslo = MmdbMap({{"city", MmdbText("Oslo")}});
  std::ofstream(file.toStdString(), std::ios::binary) << MmdbBytes(4, {{0xC0000200, 24, oslo}});
  lookup.SetDatabase(file);
  EXPECT_EQ(logged.size(), 1);
  ClientLocation known;
  known.city = "Bergen";
  known.zip = "5003";

  EXPECT_EQ(Find("192.0.2.1", known).city, "Bergen") << "the locator says nothing of it";
  lookup.SetServices("", server.Address());
  WriteFlag("a flag");
  const ClientLocation found = Find("192.0.2.1", known);
  EXPECT_EQ(found.city, "Oslo");
  EXPECT_EQ(found.zip, "5003");
  EXPECT_EQ(found.flag, "a flag");
  lookup.SetDatabase("");
  EXPECT_EQ(Find("192.0.2.1", known).city, "Bergen");
}

TEST_F(LocationLookupTest, DroppedLookupAsksForNoFlag) {
  server.answers[kPage + "192.0.2.1"] = {"", false};
  auto transfer = lookup.Find("192.0.2.1", {}, [](const ClientLocation&) { ADD_FAILURE(); });
  ASSERT_TRUE(PumpUntil([&] { return !server.requests.empty(); }));
  transfer.reset();
  PumpFor(std::chrono::milliseconds(20));
  EXPECT_EQ(server.requests.size(), 1);
}

}  // namespace
}  // namespace corvane
