#include "geo/location_database.h"

#include <fstream>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <gmock/gmock.h>

#include "tests/support/mmdb_bytes.h"
#include "tests/support/test_client.h"

namespace corvane {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;

constexpr std::uint32_t kTestNet = 0xC0000200;  // 192.0.2.0
const std::string kAddress = "192.0.2.17";

std::string Flat(const std::string& key, const std::string& text) {
  return MmdbMap({{key, MmdbText(text)}});
}

// A text in two nested maps.
std::string Nested(const std::string& outer, const std::string& inner, const std::string& text) {
  return MmdbMap({{outer, Flat(inner, text)}});
}

std::string CityFile(const std::string& city, int version = 4) {
  return MmdbBytes(version, {{kTestNet, 24, Flat("city", city)}});
}

class LocationDatabaseTest : public testing::Test {
 protected:
  void Write(const std::string& bytes) {
    std::ofstream(name.toStdString(), std::ios::binary) << bytes;
  }
  void Open() {
    logged.clear();
    database.emplace(name, folder.path(),
                     [this](const std::string& text) { logged.push_back(text); });
  }
  // Checks the file until something is logged.
  bool LooksAgain() {
    const std::size_t before = logged.size();
    return PumpUntil([&] {
      database->CheckFile();
      return logged.size() > before;
    });
  }
  // Country, state, city, zip and time zone for a client whose fields were all "old".
  std::string Found(const std::string& address = kAddress) {
    ClientLocation location{"old", "old", "old", "old", "old", {}};
    database->Find(address, location);
    return location.country + "|" + location.state + "|" + location.city + "|" + location.zip +
           "|" + location.timeZone;
  }

  QTemporaryDir folder;
  const QString name = folder.filePath(QStringLiteral("places.mmdb"));
  std::vector<std::string> logged;
  std::optional<LocationDatabase> database;
};

TEST_F(LocationDatabaseTest, RecordsOfAllLayoutsAreUnderstood) {
  const std::string names = MmdbMap({{"de", MmdbText("Norwegen")}, {"en", MmdbText("Norway")}});
  const std::string twoBytes = std::string(255, 'x') + "\xC3\xBC";
  const struct {
    std::string value;
    std::string found;
  } cases[] = {
      {MmdbMap({{"country_code", MmdbText("NO")},
                {"state1", MmdbText("Oslo County")},
                {"city", MmdbText("Oslo")},
                {"postcode", MmdbText("0150")},
                {"timezone", MmdbText("Asia/Kolkata")}}),
       "Norway|Oslo County|Oslo|0150|+5:30"},
      {MmdbMap({{"country", MmdbMap({{"iso_code", MmdbText("NO")}, {"names", names}})},
                {"subdivisions", MmdbArray({MmdbMap({{"iso_code", MmdbText("03")},
                                                     {"names", Flat("en", "Oslo County")}})})},
                {"city", MmdbMap({{"names", Flat("en", "Oslo")}})},
                {"postal", Flat("code", "150")},
                {"location", Flat("time_zone", "Etc/GMT+7")}}),
       "Norway|03|Oslo|150|-7"},
      {MmdbMap({{"subdivisions", MmdbArray({Nested("names", "en", "Oslo County")})}}),
       "old|Oslo County|old|old|old"},
      {Nested("country", "iso_code", "DE"), "Germany|old|old|old|old"},
      {Flat("country", "JP"), "Japan|old|old|old|old"},
      {Flat("country", "Atlantis"), "Atlantis|old|old|old|old"},
      {MmdbMap({{"country", MmdbText("JP")}, {"country_name", MmdbText("Nippon")}}),
       "Nippon|old|old|old|old"},
      {Flat("timezone", "-03:05"), "old|old|old|old|-3:05"},
      {Flat("timezone", "UTC"), "old|old|old|old|+0"},
      {Flat("timezone", "../zoneinfo/UTC"), "old|old|old|old|old"},
      {Flat("timezone", "Mars/Olympus"), "old|old|old|old|old"},
      // Values of unknown meaning, which are ignored.
      {MmdbMap({}), "old|old|old|old|old"},
      {MmdbText("Oslo"), "old|old|old|old|old"},
      {MmdbArray({Flat("city", "Oslo")}), "old|old|old|old|old"},
      {MmdbMap({{"city", MmdbText("")}, {"country_code", MmdbText("")}}), "old|old|old|old|old"},
      {MmdbMap({{"state1", MmdbText("")}, {"region", MmdbText("03")}}), "old|03|old|old|old"},
      {MmdbMap({{"city", MmdbArray({})}, {"subdivisions", MmdbText("0")}}), "old|old|old|old|old"},
      {Flat("city", twoBytes), "old|old|" + twoBytes.substr(0, 255) + "|old|old"},
  };
  for (const auto& row : cases) {
    for (const int version : {4, 6}) {
      Write(MmdbBytes(version, {{kTestNet, 24, row.value}}));
      Open();
      EXPECT_EQ(Found(), row.found) << version;
      EXPECT_THAT(logged, ElementsAre(AllOf(HasSubstr("places.mmdb"), HasSubstr("of 2026-05-28"))));
    }
  }
}

TEST_F(LocationDatabaseTest, EachAddressHasItsRange) {
  for (const int version : {4, 6}) {
    Write(MmdbBytes(version, {{kTestNet, 25, Flat("city", "Oslo")},
                              {kTestNet + 128, 32, Flat("city", "Rome")},
                              {0x0A000000, 8, Flat("city", "Home")}}));
    Open();
    for (const auto& [address, city] : {std::pair{"192.0.2.0", "Oslo"},
                                        {"192.0.2.127", "Oslo"},
                                        {"192.0.2.128", "Rome"},
                                        {"192.0.2.129", "old"},
                                        {"10.255.255.255", "Home"},
                                        {"11.0.0.0", "old"},
                                        {"2001:db8::17", "old"},
                                        {"no address", "old"},
                                        {"", "old"}}) {
      EXPECT_EQ(Found(address), std::string("old|old|") + city + "|old|old") << address;
    }
    EXPECT_EQ(logged.size(), 1);
  }
}

TEST_F(LocationDatabaseTest, UnusableFileIsReportedOnce) {
  const std::string whole = CityFile("Oslo");
  // A number of nodes whose size overflows 32 bits.
  std::string countless = whole;
  const std::size_t count = countless.rfind("node_count") + 10;
  countless.replace(count, 1 + (countless[count] & 31), "\xC4\xFF\xFF\xFF\xFF");
  const struct {
    std::string bytes;
    std::string reason;
  } cases[] = {
      {"", "not an mmdb file, or not a complete one"},
      {"no mmdb file", "not an mmdb file, or not a complete one"},
      {whole.substr(0, whole.size() / 2), "not an mmdb file, or not a complete one"},
      {whole.substr(0, whole.size() - 40), "not an mmdb file, or not a complete one"},
      // The end alone, as if the beginning of a download were missing.
      {whole.substr(whole.size() / 2), "not an mmdb file, or not a complete one"},
      {countless, "not an mmdb file, or not a complete one"},
      {MmdbBytes(6, {}), "it has IPv6 addresses only, and clients have IPv4 ones"},
  };
  for (const auto& row : cases) {
    Write(row.bytes);
    Open();
    EXPECT_EQ(Found(), "old|old|old|old|old");
    EXPECT_EQ(Found(), "old|old|old|old|old");
    EXPECT_THAT(logged, ElementsAre(AllOf(HasSubstr("places.mmdb: " + row.reason),
                                          HasSubstr("; no location is known"))));
  }
  for (const bool isFolder : {false, true}) {
    QFile::remove(name);
    if (isFolder) QDir().mkdir(name);
    Open();
    EXPECT_EQ(Found(), "old|old|old|old|old");
    EXPECT_THAT(logged, ElementsAre(HasSubstr("there is no such file")));
  }
}

TEST_F(LocationDatabaseTest, DamagedRecordIsReportedOnceAndTheOthersAreRead) {
  // A map that claims more entries than there are bytes.
  Write(MmdbBytes(4, {{0x0A000000, 8, Flat("city", "Home")}, {kTestNet, 24, "\xFF\xFF\xFF\xFF"}}));
  Open();
  EXPECT_EQ(Found(), "old|old|old|old|old");
  EXPECT_EQ(Found(), "old|old|old|old|old");
  EXPECT_EQ(Found("10.1.2.3"), "old|old|Home|old|old");
  EXPECT_THAT(logged, ElementsAre(HasSubstr("of 2026"), HasSubstr("damaged")));
}

TEST_F(LocationDatabaseTest, FileIsReadAgainWhenItChanges) {
  Open();
  EXPECT_THAT(logged, ElementsAre(HasSubstr("there is no such file")));
  const struct {
    std::string bytes;
    std::string city;
    std::string logged;
  } steps[] = {
      {CityFile("Oslo"), "Oslo", "of 2026-05-28"},
      {CityFile("Rome", 6), "Rome", "of 2026-05-28"},
      // Truncated in place while in use.
      {"", "Rome", "not an mmdb file, or not a complete one"},
      {CityFile("Bern"), "Bern", "of 2026-05-28"},
  };
  for (const auto& step : steps) {
    Write(step.bytes);
    ASSERT_TRUE(LooksAgain());
    EXPECT_EQ(Found(), "old|old|" + step.city + "|old|old");
    EXPECT_THAT(logged.back(), HasSubstr(step.logged));
  }
  ASSERT_TRUE(QFile::remove(name));
  ASSERT_TRUE(LooksAgain());
  EXPECT_THAT(logged.back(), HasSubstr("there is no such file; the previous one stays in use"));
  EXPECT_EQ(Found(), "old|old|Bern|old|old");
  const std::size_t before = logged.size();
  database->CheckFile();
  PumpFor(std::chrono::milliseconds(20));
  EXPECT_EQ(logged.size(), before) << "nothing has changed";

  // Renamed into its place, as careful programs do.
  const QString fresh = folder.filePath(QStringLiteral("fresh"));
  Write(CityFile("Oslo"));
  ASSERT_TRUE(QFile::rename(name, fresh) && QFile::rename(fresh, name));
  ASSERT_TRUE(LooksAgain());
  EXPECT_EQ(Found(), "old|old|Oslo|old|old");
  database.reset();
  // The thread that read it may still be releasing it.
  EXPECT_TRUE(PumpUntil([this] {
    return QDir(folder.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot) ==
           QStringList("places.mmdb");
  })) << "no copy stays behind";
}

}  // namespace
}  // namespace corvane
