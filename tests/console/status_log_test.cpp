#include <QSignalSpy>
#include <QTest>
#include <gtest/gtest.h>

#include "console/status_log_model.h"

using namespace corvane;

TEST(StatusPrefix, PadsMinutesAndSecondsOnly) {
  EXPECT_EQ(StatusPrefix({{2011, 3, 7}, {9, 5, 2}}), "[3/7/2011 9:05:02] ");
  EXPECT_EQ(StatusPrefix({{2026, 12, 31}, {23, 59, 59}}), "[12/31/2026 23:59:59] ");
}

TEST(StatusClock, PrefixFollowsTheSecond) {
  constexpr qint64 kStart = 1'300'000'000'000;
  StatusClock clock;
  for (const qint64 passed : {0, 999, 1000, 61'000, -1}) {
    const StatusClock::Time time{std::chrono::milliseconds(kStart + passed)};
    EXPECT_EQ(clock.Prefix(time), StatusPrefix(QDateTime::fromMSecsSinceEpoch(kStart + passed)));
  }
}

TEST(StatusLogModel, OldestLinesGoWhereThereAreTooMany) {
  constexpr std::size_t kMost = 200'000;
  StatusLogModel model(kMost);
  std::string last;
  for (int burst = 0; burst < 3; ++burst) {
    for (int line = 0; line < 10'000; ++line) {
      last = std::to_string(burst) + " " + std::to_string(line);
      model.Append("[now] ", last);
    }
    ASSERT_TRUE(QTest::qWaitFor([&] {
      const int rows = model.rowCount();
      return rows > 0 && model.index(rows - 1).data().toString().endsWith(last.c_str());
    }));
    EXPECT_LE(model.Log().Bytes(), kMost);
    EXPECT_GT(model.Log().Bytes(), kMost / 2);
  }
  // What is left is the end, without a gap.
  const int rows = model.rowCount();
  for (int row = 0; row < rows; ++row) {
    ASSERT_EQ(model.index(row).data().toString().toStdString(),
              "[now] 2 " + std::to_string(10'000 - rows + row));
  }
  model.KeepNothing();
  model.Append("", "for nobody");
  EXPECT_EQ(model.Log().Count(), 0U);
}

TEST(StatusLogModel, LinesBecomeRowsTogetherUntilTheyAreCleared) {
  StatusLogModel model;
  const QSignalSpy added(&model, &QAbstractItemModel::rowsInserted);
  model.Append("[1] ", "two\nlines");
  model.Append("[2] ", std::string(5000, 'x'));
  ASSERT_TRUE(QTest::qWaitFor([&] { return model.rowCount() == 2; }));
  EXPECT_EQ(added.count(), 1);
  EXPECT_EQ(model.index(0).data().toString(), "[1] two\\nlines");
  EXPECT_LT(model.index(1).data().toString().size(), 1010);
  EXPECT_EQ(model.Log().Line(1).size(), 5004U);

  model.Append("", "pending");
  model.Clear();
  EXPECT_EQ(model.rowCount(), 0);
  model.Append("", "after");
  ASSERT_TRUE(QTest::qWaitFor([&] { return model.rowCount() > 0; }));
  EXPECT_EQ(model.rowCount(), 1);
  EXPECT_EQ(model.index(0).data().toString(), "after");
}
