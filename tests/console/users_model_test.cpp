#include "console/users_model.h"

#include <string>

#include <gtest/gtest.h>

using namespace corvane;

namespace {

std::string Rows(const UsersModel& model) {
  QString rows;
  for (int row = 0; row < model.rowCount(); ++row) {
    rows += model.index(row, 0).data().toString() + "@" + model.index(row, 1).data().toString();
    rows += ";";
  }
  return rows.toStdString();
}

}  // namespace

TEST(UsersModel, LogInGoesByNameAndLogOutByNameAndNetwork) {
  UsersModel model;
  model.LogIn("Ann", "North", {});
  model.LogIn("ANN", "South", {});
  model.LogIn("", "North", {});
  EXPECT_EQ(Rows(model), "Ann@North;@North;");
  model.LogOut("Ann", "South");
  model.LogOut("Nobody", "North");
  EXPECT_EQ(Rows(model), "Ann@North;@North;");
  model.LogOut("aNN", "NORTH");
  EXPECT_EQ(Rows(model), "@North;");
  model.LogIn("Ann", "South", {});
  EXPECT_EQ(Rows(model), "@North;Ann@South;");
}

TEST(UsersModel, FindsItsRowsAfterOthersLeftInAnyOrder) {
  UsersModel model;
  for (int i = 0; i < 100; ++i)
    model.LogIn("user" + std::to_string(i), "North", {});
  for (int i = 0; i < 98; ++i)
    model.LogOut("user" + std::to_string(i * 37 % 100), "North");
  EXPECT_EQ(Rows(model), "user26@North;user63@North;");
}
