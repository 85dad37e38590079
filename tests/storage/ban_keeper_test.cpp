#include "storage/ban_keeper.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <optional>
#include <thread>

#include <QDir>
#include <QFile>
#include <gmock/gmock.h>

#include "tests/storage/database_fixture.h"
#include "tests/support/test_client.h"

namespace corvane {
namespace {

class BanKeeperTest : public DatabaseTest {
 protected:
  BanKeeperTest() {
    EXPECT_TRUE(connection.Connect(file));
    keeper.emplace(bans);
  }

  bool IsFileThere() const { return QFile::exists(waiting); }
  std::string Stored() { return Run("SELECT address, reason FROM bans ORDER BY address"); }

  const QString waiting = Path("corvane-bans.waiting");
  BansTable bans{connection};
  std::optional<BanKeeper> keeper;
};

TEST_F(BanKeeperTest, BanThatCannotBeStoredCountsUntilItIs) {
  keeper->Add("10.0.0.1", "op", "one", "home");
  EXPECT_EQ(Stored(), "10.0.0.1|one;") << "at once";
  const QDateTime before = QDateTime::currentDateTime();
  int told = 0;
  connection.Complained = [&told](const std::string&) { ++told; };
  {
    OtherProgram reader(file);
    reader.Run("BEGIN; SELECT * FROM bans");
    keeper->Add("10.0.0.2", "op", "two", "home");
    keeper->Add("10.0.0.3", "op", "three", "home");
    EXPECT_TRUE(keeper->IsBanned("10.0.0.2") && keeper->IsBanned("10.0.0.3"));
    EXPECT_FALSE(keeper->IsBanned("10.0.0.4"));
    // Through tries that fail, and to where the date would be another one. A fault that lasts is
    // told once a second.
    EXPECT_TRUE(PumpUntil([&] {
      return told >= 2 && before.secsTo(QDateTime::currentDateTime()) >= 2;
    })) << told;
    EXPECT_LT(told, 5);
    EXPECT_EQ(Stored(), "10.0.0.1|one;");
    EXPECT_TRUE(IsFileThere());
  }
  EXPECT_TRUE(
      PumpUntil([this] { return Stored() == "10.0.0.1|one;10.0.0.2|two;10.0.0.3|three;"; }));
  EXPECT_TRUE(keeper->IsBanned("10.0.0.3"));
  EXPECT_TRUE(PumpUntil([this] { return !IsFileThere(); }));
  const auto all = bans.All();
  ASSERT_TRUE(all && all->size() == 3);
  for (const BansTable::Ban& ban : *all) {
    EXPECT_EQ(ban.by + "|" + ban.network, "op|home");
    EXPECT_LE(before.secsTo(ban.bandate), 1) << "the date of the ban, not of its storing";
  }
  const auto third = std::ranges::find(*all, "10.0.0.3", &BansTable::Ban::address);
  EXPECT_TRUE(bans.Delete(std::vector{third->id}));
  EXPECT_FALSE(keeper->IsBanned("10.0.0.3")) << "nothing stays behind";
}

TEST_F(BanKeeperTest, OneThatIsAlwaysRefusedHoldsUpNoOther) {
  Run("CREATE TRIGGER no BEFORE INSERT ON bans WHEN new.address='10.0.0.1' BEGIN SELECT"
      " RAISE(ABORT, 'no'); END");
  {
    OtherProgram other(file);
    other.Run("BEGIN IMMEDIATE");
    keeper->Add("10.0.0.1", "op", "one", "home");
    keeper->Add("10.0.0.2", "op", "two", "home");
  }
  EXPECT_TRUE(PumpUntil([this] { return Stored() == "10.0.0.2|two;"; }));
  EXPECT_TRUE(keeper->IsBanned("10.0.0.1"));
  Run("DROP TRIGGER no");
  keeper.reset();
  EXPECT_EQ(Stored(), "10.0.0.1|one;10.0.0.2|two;") << "tried once more at the end";
}

TEST_F(BanKeeperTest, WhatWaitsOutlivesTheServer) {
  const BansTable::Ban odd{0, "10.0.0.2", "o\tp", "%09 \n\xff\"", {}, ""};
  {
    OtherProgram other(file);
    other.Run("BEGIN IMMEDIATE");
    keeper->Add("10.0.0.1", "op", "one", "home");
    std::jthread release([&other] {
      std::this_thread::sleep_for(std::chrono::milliseconds(100));
      other.Run("COMMIT");
    });
    keeper.reset();
    EXPECT_EQ(Stored(), "10.0.0.1|one;") << "the lock went within the second at the end";
    EXPECT_FALSE(IsFileThere());
  }
  keeper.emplace(bans);
  const QDateTime before = QDateTime::currentDateTime();
  {
    OtherProgram other(file);
    other.Run("BEGIN IMMEDIATE");
    keeper->Add(odd.address, odd.by, odd.reason, odd.network);
    // As a killed server leaves it, its last line cut off.
    QFile left(waiting);
    EXPECT_TRUE(left.copy(Path("copy")));
    keeper.reset();
    QFile::remove(waiting);
    EXPECT_TRUE(QFile::rename(Path("copy"), waiting) && left.open(QIODevice::Append));
    left.write("10.0.0.3\top\tcut\t2026-11-22 10:00:00\tho");
    left.close();
    keeper.emplace(bans);
    EXPECT_TRUE(keeper->IsBanned("10.0.0.2"));
    EXPECT_FALSE(keeper->IsBanned("10.0.0.3"));
    keeper.reset();
  }
  keeper.emplace(bans);
  EXPECT_TRUE(PumpUntil([this] { return !IsFileThere(); }));
  const auto all = bans.All();
  ASSERT_TRUE(all && all->size() == 2);
  const BansTable::Ban& kept = all->back();
  EXPECT_EQ(kept.address + kept.by + kept.reason + kept.network,
            odd.address + odd.by + odd.reason + odd.network);
  EXPECT_LE(std::abs(before.secsTo(kept.bandate)), 1) << "the date of the ban";
}

TEST_F(BanKeeperTest, WhatWaitsIsBoundedAndSaidWhenItIsLost) {
  const std::string long_reason(1 << 20, 'r');
  Run("ALTER TABLE bans RENAME TO elsewhere");
  for (int i = 0; i < 20; ++i)
    keeper->Add("10.0.0.1", "op", long_reason, "home");
  keeper->Add("10.0.0.2", "op", long_reason, "home");
  EXPECT_TRUE(keeper->IsBanned("10.0.0.2"));
  Run("ALTER TABLE elsewhere RENAME TO bans");
  EXPECT_TRUE(
      PumpUntil([this] { return !Run("SELECT 1 FROM bans WHERE address='10.0.0.2'").empty(); }));
  EXPECT_EQ(Run("SELECT address, count(*), max(length(reason)) FROM bans GROUP BY 1"),
            "10.0.0.1|15|1048576;10.0.0.2|1|0;");

  Run("DROP TABLE bans");
  QDir().mkdir(waiting);
  keeper->Add("10.0.0.3", "op", "", "home");
  testing::internal::CaptureStderr();
  keeper.reset();
  EXPECT_THAT(testing::internal::GetCapturedStderr(),
              testing::HasSubstr("database: bans that could not be stored and are lost: 1\n"));
}

}  // namespace
}  // namespace corvane
