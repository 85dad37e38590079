#include "console/users_model.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>

#include "tests/console/console_fixture.h"

namespace corvane {
namespace {

using testing::ElementsAre;

std::vector<std::string> RowsNow(UsersModel& model) {
  model.Update();
  return RowTexts(model);
}

TEST(UsersModel, RowsAreAddedByNameAndRemovedByNameAndNetwork) {
  UsersModel model;
  model.Add("Ann", "North", {});
  model.Add("ANN", "South", {});
  model.Add("", "North", {});
  EXPECT_THAT(RowsNow(model), ElementsAre("Ann|North", "|North"));
  model.Remove("Ann", "South");
  model.Remove("Nobody", "North");
  EXPECT_THAT(RowsNow(model), ElementsAre("Ann|North", "|North"));
  model.Remove("aNN", "NORTH");
  EXPECT_THAT(RowsNow(model), ElementsAre("|North"));
  model.Add("Ann", "South", {});
  EXPECT_THAT(RowsNow(model), ElementsAre("|North", "Ann|South"));
}

TEST(UsersModel, FindsItsRowsAfterOthersLeftInAnyOrder) {
  UsersModel model;
  for (int i = 0; i < 100; ++i)
    model.Add("user" + std::to_string(i), "North", {});
  model.Update();
  for (int i = 0; i < 98; ++i)
    model.Remove("user" + std::to_string(i * 37 % 100), "North");
  EXPECT_THAT(RowsNow(model), ElementsAre("user26|North", "user63|North"));
  model.Clear();
  EXPECT_EQ(model.rowCount(), 0);
  model.Add("user26", "North", {});
  EXPECT_THAT(RowsNow(model), ElementsAre("user26|North"));
}

TEST(UsersModel, ShowsTheFirstChangeAtOnceAndTheNextOnesTogether) {
  UsersModel model;
  const QAbstractItemModelTester tester(&model,
                                        QAbstractItemModelTester::FailureReportingMode::Fatal);
  for (const char* user : {"Ann", "Ben", "Cid", "Dan"})
    model.Add(user, "North", {});
  EXPECT_THAT(RowTexts(model), ElementsAre("Ann|North"));
  ASSERT_TRUE(PumpUntil([&model] { return model.rowCount() == 4; }));
  const QSignalSpy removals(&model, &QAbstractItemModel::rowsRemoved);
  for (const char* user : {"Ben", "Cid"})
    model.Remove(user, "North");
  for (const char* user : {"Eve", "Cid"})
    model.Add(user, "South", {});
  model.Remove("Eve", "South");
  EXPECT_THAT(RowTexts(model), ElementsAre("Ann|North", "Ben|North", "Cid|North", "Dan|North"));
  EXPECT_THAT(RowsNow(model), ElementsAre("Ann|North", "Dan|North", "Cid|South"));
  EXPECT_EQ(removals.count(), 1);
  PumpFor(std::chrono::milliseconds(50));
  model.Remove("Ann", "North");
  EXPECT_EQ(model.rowCount(), 2);
}

}  // namespace
}  // namespace corvane
