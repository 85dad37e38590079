#include "console/users_model.h"

#include <gmock/gmock.h>
#include <string>
#include <vector>

#include <gtest/gtest.h>

using namespace corvane;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

std::vector<std::string> Rows(const UsersModel& model) {
  std::vector<std::string> rows;
  for (int row = 0; row < model.rowCount(); ++row) {
    rows.push_back(
        (model.index(row, 0).data().toString() + "@" + model.index(row, 1).data().toString())
            .toStdString());
  }
  return rows;
}

}  // namespace

TEST(UsersModel, OneNameHasOneRowWhateverItsNetwork) {
  UsersModel model;
  model.LogIn("Ann", "North", {});
  model.LogIn("Ann", "South", {});
  model.LogIn("ANN", "North", {});
  model.LogIn("Ben", "North", {});
  EXPECT_THAT(Rows(model), ElementsAre("Ann@North", "Ben@North"));
}

TEST(UsersModel, LogOutRemovesTheRowOfThatNameAndNetworkOnly) {
  UsersModel model;
  model.LogIn("Ann", "North", {});
  model.LogIn("Ann", "South", {});
  model.LogOut("Ann", "South");
  model.LogOut("Nobody", "North");
  EXPECT_THAT(Rows(model), ElementsAre("Ann@North"));
  model.LogOut("aNN", "NORTH");
  EXPECT_THAT(Rows(model), IsEmpty());
  model.LogIn("Ann", "South", {});
  EXPECT_THAT(Rows(model), ElementsAre("Ann@South"));
}

TEST(UsersModel, FindsItsRowsAfterOthersLeftInAnyOrder) {
  UsersModel model;
  for (int i = 0; i < 100; ++i)
    model.LogIn("user" + std::to_string(i), "North", {});
  for (int i = 0; i < 98; ++i)
    model.LogOut("user" + std::to_string(i * 37 % 100), "North");
  EXPECT_THAT(Rows(model), ElementsAre("user26@North", "user63@North"));
  model.LogIn("", "North", {});
  model.LogOut("user26", "North");
  EXPECT_THAT(Rows(model), ElementsAre("user63@North", "@North"));
  model.LogOut("", "North");
  EXPECT_THAT(Rows(model), ElementsAre("user63@North"));
}
