#include "storage/bans.h"

#include <algorithm>
#include <cstdlib>

#include <QDir>
#include <QFile>
#include <gmock/gmock.h>

#include "tests/storage/database_fixture.h"
#include "tests/support/test_client.h"

namespace corvane {
namespace {

class BansTest : public DatabaseTest {
 protected:
  BansTest() {
    EXPECT_TRUE(connection.Connect(file));
    bans.emplace(connection);
  }

  std::vector<Ban> Listed() {
    std::vector<Ban> all;
    for (auto place = Bans::kBegin; place != Bans::kEnd;)
      std::ranges::copy(bans->Portion(place).value(), std::back_inserter(all));
    return all;
  }
  std::int64_t NumberOf(const std::string& address) {
    for (const Ban& ban : Listed())
      if (ban.address == address) return ban.id;
    return 0;
  }
  bool IsFileThere() const { return QFile::exists(waiting); }
  std::string Stored() { return Run("SELECT address, reason FROM bans ORDER BY address"); }

  const QString waiting = Path("corvane-bans.waiting");
  std::optional<Bans> bans;
};

TEST_F(BansTest, BanThatCannotBeStoredIsEnforcedUntilItIs) {
  bans->Add("10.0.0.1", "op", "one", "home");
  EXPECT_EQ(Stored(), "10.0.0.1|one;") << "at once";
  const QDateTime before = QDateTime::currentDateTime();
  std::int64_t third = 0;
  int reports = 0;
  connection.FaultReported = [&reports](const std::string&) { ++reports; };
  {
    OtherProgram reader(file);
    reader.Run("BEGIN; SELECT * FROM bans");
    bans->Add("10.0.0.2", "op", "two", "home");
    bans->Add("10.0.0.3", "op", "three", "home");
    bans->Add("10.0.0.4", "op", "four", "home");
    third = NumberOf("10.0.0.3");
    EXPECT_FALSE(bans->Lift({NumberOf("10.0.0.1"), NumberOf("10.0.0.4")}));
    EXPECT_TRUE(bans->IsBanned("10.0.0.1")) << "only the database could lift it";
    EXPECT_TRUE(bans->IsBanned("10.0.0.2") && bans->IsBanned("10.0.0.3"));
    EXPECT_FALSE(bans->IsBanned("10.0.0.4") || bans->IsBanned("10.0.0.30"));
    // Long enough for failed retries and for another date. A lasting fault is reported once a
    // second.
    EXPECT_TRUE(PumpUntil([&] {
      return reports >= 2 && before.secsTo(QDateTime::currentDateTime()) >= 2;
    })) << reports;
    EXPECT_LT(reports, 5);
    EXPECT_EQ(Stored(), "10.0.0.1|one;");
  }
  EXPECT_TRUE(
      PumpUntil([this] { return Stored() == "10.0.0.1|one;10.0.0.2|two;10.0.0.3|three;"; }));
  EXPECT_TRUE(PumpUntil([this] { return !IsFileThere(); }));
  EXPECT_EQ(Listed().size(), 3U);
  for (const Ban& ban : Listed()) {
    EXPECT_EQ(ban.by + "|" + ban.network, "op|home");
    EXPECT_LE(before.secsTo(ban.bandate), 1) << "the date of the ban, not of its storing";
  }
  EXPECT_EQ(bans->Find(third).value().reason, "three");
  EXPECT_TRUE(bans->Lift({third, 77})) << "under the number that it had while it waited";
  EXPECT_FALSE(bans->IsBanned("10.0.0.3")) << "nothing stays behind";
  bans->Add("10.0.0.3", "op", "", "home");
  EXPECT_EQ(NumberOf("10.0.0.3"), 4) << "no number comes back";
}

TEST_F(BansTest, BanThatIsAlwaysRefusedDelaysNoOther) {
  Run("CREATE TRIGGER no BEFORE INSERT ON bans WHEN new.address='10.0.0.1' BEGIN SELECT"
      " RAISE(ABORT, 'no'); END");
  {
    OtherProgram other(file);
    other.Run("BEGIN IMMEDIATE");
    bans->Add("10.0.0.1", "op", "one", "home");
    bans->Add("10.0.0.2", "op", "two", "home");
  }
  EXPECT_TRUE(PumpUntil([this] { return Stored() == "10.0.0.2|two;"; }));
  EXPECT_TRUE(bans->IsBanned("10.0.0.1"));
  Run("DROP TRIGGER no");
  bans.reset();
  EXPECT_EQ(Stored(), "10.0.0.1|one;10.0.0.2|two;") << "tried once more at the end";
}

TEST_F(BansTest, WaitingBansSurviveARestart) {
  const Ban odd{0, "10.0.0.2", "o\tp", "%09 \n\xff\"", {}, ""};
  // Refuses the first two attempts. FAIL keeps what the trigger has inserted.
  Run("CREATE TABLE tries(x); CREATE TRIGGER busy BEFORE INSERT ON bans WHEN (SELECT count(*) FROM "
      "tries)<2 BEGIN INSERT INTO tries VALUES(1); SELECT RAISE(FAIL, 'busy'); END");
  bans->Add("10.0.0.1", "op", "one", "home");
  bans.reset();
  EXPECT_EQ(Stored(), "10.0.0.1|one;") << "tried again within the second at the end";
  EXPECT_FALSE(IsFileThere());
  bans.emplace(connection);
  const QDateTime before = QDateTime::currentDateTime();
  {
    OtherProgram other(file);
    other.Run("BEGIN IMMEDIATE");
    bans->Add(odd.address, odd.by, odd.reason, odd.network);
    bans->Add("10.0.0.4", "op", "lifted", "home");
    EXPECT_TRUE(bans->Lift({NumberOf("10.0.0.4")})) << "without the database";
    // As left by a killed server: the last line is truncated.
    QFile left(waiting);
    EXPECT_TRUE(left.copy(Path("copy")));
    bans.reset();
    QFile::remove(waiting);
    EXPECT_TRUE(QFile::rename(Path("copy"), waiting) && left.open(QIODevice::Append));
    left.write("10.0.0.3\top\tcut\t2026-11-22 10:00:00\tho");
    left.close();
    bans.emplace(connection);
    EXPECT_TRUE(bans->IsBanned("10.0.0.2"));
    EXPECT_FALSE(bans->IsBanned("10.0.0.3") || bans->IsBanned("10.0.0.4"));
    bans.reset();
  }
  bans.emplace(connection);
  EXPECT_TRUE(PumpUntil([this] { return !IsFileThere(); }));
  const std::vector<Ban> all = Listed();
  ASSERT_EQ(all.size(), 2U);
  const Ban& kept = all.back();
  EXPECT_EQ(kept.address + kept.by + kept.reason + kept.network,
            odd.address + odd.by + odd.reason + odd.network);
  EXPECT_LE(std::abs(before.secsTo(kept.bandate)), 1) << "the date of the ban";
}

TEST_F(BansTest, WaitingBansAreBoundedAndTheirLossIsReported) {
  const std::string long_reason(1 << 20, 'r');
  Run("ALTER TABLE bans RENAME TO elsewhere");
  for (int i = 0; i < 20; ++i)
    bans->Add("10.0.0.1", "op", long_reason, "home");
  bans->Add("10.0.0.2", "op", long_reason, "home");
  EXPECT_TRUE(bans->IsBanned("10.0.0.2"));
  Run("ALTER TABLE elsewhere RENAME TO bans");
  EXPECT_TRUE(
      PumpUntil([this] { return !Run("SELECT 1 FROM bans WHERE address='10.0.0.2'").empty(); }));
  EXPECT_EQ(Run("SELECT address, count(*), max(length(reason)) FROM bans GROUP BY 1"),
            "10.0.0.1|15|1048576;10.0.0.2|1|0;");

  Run("CREATE TRIGGER no BEFORE INSERT ON bans BEGIN SELECT RAISE(ABORT, 'no'); END");
  QDir().mkdir(waiting);
  bans->Add("10.0.0.3", "op", "", "home");
  EXPECT_FALSE(bans->Lift({NumberOf("10.0.0.3")}));
  EXPECT_EQ(connection.ErrorMessage(), "the file of waiting bans could not be written");
  EXPECT_TRUE(bans->IsBanned("10.0.0.3"));
  testing::internal::CaptureStderr();
  bans.reset();
  EXPECT_THAT(testing::internal::GetCapturedStderr(),
              testing::HasSubstr("database: bans that could not be stored and are lost: 1\n"));
}

TEST_F(BansTest, BanThatEndsHoldsUntilThenOfWhateverTheClockShows) {
  const QDateTime start = QDateTime::fromString("2026-02-03T21:14:09Z", Qt::ISODate);
  QDateTime now = start;
  int due = 0;
  SignalConnection ends;
  const auto restart = [&] {
    bans.emplace(connection);
    bans->Now = [&now] { return now; };
    ends = bans->EndsDue.Connect([&] {
      ++due;
      std::vector<std::int64_t> ids;
      const auto ended = bans->Ended();
      for (const Ban& ban : *ended)
        ids.push_back(ban.id);
      EXPECT_TRUE(bans->Lift(ids));
    });
  };
  restart();
  Run("DROP TABLE ban_ends");
  bans->Add("10.0.0.1", "op", "ever", "home");
  bans->Add("10.0.0.2", "op", "hour", "home", start.addSecs(3600));
  bans->Add("10.0.0.3", "op", "both", "home", start.addSecs(60));
  bans->Add("10.0.0.3", "op", "both", "home");
  EXPECT_EQ(Run("SELECT * FROM ban_ends"), "2|2026-02-03 22:14:09;3|2026-02-03 21:15:09;")
      << "made when needed";
  {
    OtherProgram other(file);
    other.Run("BEGIN IMMEDIATE");
    bans->Add("10.0.0.4", "op", "waits", "home", start.addSecs(3600));
    now = start.addSecs(3600);
    EXPECT_EQ(bans->Ended().value().size(), 1U) << "it can be lifted without the database";
    now = start;
    // As a server that was killed before it could tidy up leaves it.
    EXPECT_TRUE(QFile::copy(waiting, Path("copy")));
  }
  const std::string both = "10.0.0.1|ever;10.0.0.2|hour;10.0.0.3|both;10.0.0.3|both;";
  EXPECT_TRUE(PumpUntil([&] { return Stored() == both + "10.0.0.4|waits;" && !IsFileThere(); }));
  bans.reset();
  EXPECT_TRUE(QFile::rename(Path("copy"), waiting));
  restart();
  EXPECT_TRUE(PumpUntil([&] { return !IsFileThere(); }));
  EXPECT_EQ(Stored(), both + "10.0.0.4|waits;") << "stored once";

  const auto refused = [&] {
    std::string text;
    for (const char* address : {"10.0.0.1", "10.0.0.2", "10.0.0.3", "10.0.0.4"})
      text += bans->IsBanned(address) ? 'x' : '-';
    return text + std::to_string(Listed().size());
  };
  for (const auto& [seconds, expected] : {std::pair(0, "xxxx5"),
                                          {59, "xxxx5"},
                                          {60, "xxxx4"},
                                          {3599, "xxxx4"},
                                          {3600, "x-x-2"},
                                          {-100'000, "xxxx5"}}) {
    now = start.addSecs(seconds);
    EXPECT_EQ(refused(), expected) << seconds;
  }
  EXPECT_EQ(due, 0);
  now = start.addSecs(100'000);
  EXPECT_TRUE(PumpUntil([&] { return due > 0; })) << "the clock has jumped";
  EXPECT_EQ(Stored() + Run("SELECT * FROM ban_ends"), "10.0.0.1|ever;10.0.0.3|both;");
  now = start;
  EXPECT_EQ(refused(), "x-x-2") << "what has ended does not come back";
  EXPECT_EQ(due, 1);
}

TEST_F(BansTest, EndThatTheDatabaseCannotTakeHoldsAndIsKept) {
  Run("DROP TABLE ban_ends; CREATE TABLE ban_ends(other)");
  const QDateTime until = QDateTime::currentDateTimeUtc().addSecs(2);
  EXPECT_FALSE(bans->Add("10.0.0.1", "op", "one", "home", until));
  EXPECT_EQ(connection.ErrorMessage(), "table ban_ends has no column named banid");
  EXPECT_EQ(Stored(), "") << "not without its end";
  bans.emplace(connection);
  EXPECT_TRUE(bans->IsBanned("10.0.0.1")) << "from the file";
  EXPECT_TRUE(bans->Add("10.0.0.2", "op", "two", "home")) << "needs no end";
  EXPECT_TRUE(PumpUntil([&] { return !bans->IsBanned("10.0.0.1"); }));
  EXPECT_EQ(Listed().size(), 1U);
  EXPECT_EQ(bans->Ended().value().size(), 1U);
}

TEST_F(BansTest, RangeThatLastsLongestBansItsAddresses) {
  const auto range = [](const char* text) { return RangeFromText(text).value(); };
  const QDateTime start = QDateTime::currentDateTimeUtc();
  QDateTime now = start;
  const auto reasons = [&] {
    bans->Now = [&now] { return now; };
    std::string text;
    for (const char* address : {"9.255.255.255", "10.0.0.0", "10.0.0.9", "10.0.0.10", "10.0.0.255",
                                "10.0.1.0", "10.1.0.0", "::ffff:10.0.0.9"}) {
      const BanRange* const found = bans->RangeOf(address);
      EXPECT_EQ(bans->IsBanned(address), found != nullptr);
      text += found == nullptr ? "-" : found->reason;
    }
    return text;
  };
  Run("DROP TABLE ban_ranges; CREATE TABLE ban_ranges(other)");
  EXPECT_FALSE(bans->AddRange(range("10.0.0.0/24"), "a", start.addSecs(20)));
  EXPECT_EQ(connection.ErrorMessage(), "table ban_ranges has no column named first");
  EXPECT_EQ(reasons(), "-aaaa---") << "at once";
  bans.emplace(connection);
  EXPECT_EQ(reasons(), "-aaaa---") << "from the file";
  Run("DROP TABLE ban_ranges");
  EXPECT_TRUE(bans->AddRange(range("10.0.0.10-10.0.1.0"), "b", start.addSecs(10)));
  EXPECT_TRUE(bans->AddRange(range("10.0.0.9"), "c", {}));
  EXPECT_EQ(reasons(), "-acaab--");
  EXPECT_TRUE(PumpUntil([&] { return Run("SELECT count(*) FROM ban_ranges") == "3;"; }));
  bans.emplace(connection);
  now = start.addSecs(10);
  EXPECT_EQ(reasons(), "-acaa---") << "one has ended";
  EXPECT_EQ(bans->EndedRanges().size(), 1U);
  now = start.addSecs(20);
  EXPECT_EQ(reasons(), "--c-----");
  EXPECT_TRUE(bans->LiftRanges({bans->EndedRanges()[0].id, bans->EndedRanges()[1].id}));
  EXPECT_EQ(Run("SELECT first, reason FROM ban_ranges"), "167772169|c;");
  EXPECT_EQ(bans->Ranges().size(), 1U);
}

TEST_F(BansTest, ListIsStoredInTurnsAndOthersWaitForIt) {
  BanImport::List list{{}, {"2001:db8::1"}, {}, {}};
  for (std::uint32_t i = 0; i < 20'000; ++i)
    list.ranges.push_back({0x0A000000 + 4 * i, 0x0A000000 + 4 * i + i % 2});
  const QDateTime until = QDateTime::currentDateTimeUtc().addSecs(3600);
  Run("INSERT INTO ban_ends VALUES(1, '2026-01-01 00:00:00'), (9, 'x')");  // of no ban
  bans.emplace(connection);
  for (const bool breaksOff : {true, false}) {
    std::optional<std::string> result;
    const auto done = [&](const std::string& error, BanImport& import) {
      result = error + std::to_string(import.AddressCount() + std::ssize(import.Ranges()));
    };
    EXPECT_TRUE(bans->Import(list, "op", "list", until, done));
    EXPECT_TRUE(PumpUntil([&] { return bans->IsBanned("10.0.0.0"); }));
    EXPECT_FALSE(result.has_value()) << "there are turns in between";
    EXPECT_FALSE(bans->Import(list, "op", "list", {}, done));
    EXPECT_FALSE(bans->Add("1.0.0.1", "op", "told", "home"));
    EXPECT_FALSE(bans->AddRange({1, 2}, "told", {}));
    EXPECT_FALSE(bans->Lift({1})) << connection.ErrorMessage();
    EXPECT_EQ(connection.ErrorMessage(), "a list of bans is being stored");
    connection.Rollback();
    EXPECT_FALSE(connection.Commit());
    EXPECT_TRUE(bans->IsBanned("1.0.0.1") && bans->IsBanned("0.0.0.2"));
    if (breaksOff) {
      bans.emplace(connection);
      EXPECT_EQ(Stored(), "1.0.0.1|told;") << "all of the list or nothing";
    } else {
      EXPECT_TRUE(PumpUntil([&] { return result.has_value(); }));
      EXPECT_EQ(result, "20001");
    }
  }
  EXPECT_TRUE(PumpUntil(
      [this] { return !IsFileThere() && !QFile::exists(Path("corvane-ranges.waiting")); }));
  EXPECT_EQ(Run("SELECT count(*), count(until) FROM bans LEFT JOIN ban_ends ON banid=id; "
                "SELECT count(*), count(until) FROM ban_ranges"),
            "10003|10001;10001|10000;");
  bans->Now = [&until] { return QDateTime(until); };
  EXPECT_EQ(bans->RangeOf("10.0.0.5"), nullptr);
  EXPECT_EQ(bans->Ended().value().size(), 1000U);
}

}  // namespace
}  // namespace corvane
