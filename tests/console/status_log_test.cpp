#include <QSignalSpy>
#include <QTest>
#include <gtest/gtest.h>

#include "console/status_log_model.h"

namespace corvane {
namespace {

TEST(StatusLogModel, DropsTheOldestLinesPastItsLimit) {
  constexpr qsizetype kMaxBytes = 200'000;
  qsizetype bytes = 0;
  StatusLogModel model(kMaxBytes);
  int written = 0;
  for (const int next : {10'000, 20'000, 30'000}) {
    for (; written < next; ++written)
      model.Append("[now] ", std::to_string(written));
    // The rows are the newest lines, without a gap.
    const auto isNumber = [&](int row, int number) {
      return model.index(row).data().toString() == QStringLiteral("[now] %1").arg(number);
    };
    ASSERT_TRUE(QTest::qWaitFor(
        [&] { return model.rowCount() > 0 && isNumber(model.rowCount() - 1, next - 1); }));
    bytes = 0;
    for (int row = 0; row < model.rowCount(); ++row) {
      ASSERT_TRUE(isNumber(row, next - model.rowCount() + row));
      bytes += model.index(row).data().toString().size();
    }
    EXPECT_LE(bytes, kMaxBytes);
  }
  EXPECT_GT(bytes, kMaxBytes * 9 / 10);
}

TEST(StatusLogModel, AddsTheFirstLineAtOnceAndTheNextOnesTogether) {
  StatusLogModel model;
  const QSignalSpy added(&model, &QAbstractItemModel::rowsInserted);
  model.Append("[1] ", "line");
  EXPECT_EQ(model.rowCount(), 1);
  model.Append("[2] ", std::string(5000, 'x'));
  model.Append("[3] ", "last");
  ASSERT_TRUE(QTest::qWaitFor([&] { return model.rowCount() == 3; }));
  EXPECT_EQ(added.count(), 2);
  EXPECT_EQ(model.index(0).data().toString(), "[1] line");
  EXPECT_EQ(model.index(1).data().toString().size(), 5004);

  model.Append("", "pending");
  model.Clear();
  EXPECT_EQ(model.rowCount(), 0);
  model.Append("", "after");
  ASSERT_TRUE(QTest::qWaitFor([&] { return model.rowCount() > 0; }));
  EXPECT_EQ(model.rowCount(), 1);
  EXPECT_EQ(model.index(0).data().toString(), "after");
}

}  // namespace
}  // namespace corvane
