#include "console/users_model.h"

#include "tests/console/console_fixture.h"

namespace corvane {
namespace {

using testing::ElementsAre;

TEST(UsersModel, LogInGoesByNameAndLogOutByNameAndNetwork) {
  UsersModel model;
  model.LogIn("Ann", "North", {});
  model.LogIn("ANN", "South", {});
  model.LogIn("", "North", {});
  EXPECT_THAT(RowTexts(model), ElementsAre("Ann|North", "|North"));
  model.LogOut("Ann", "South");
  model.LogOut("Nobody", "North");
  EXPECT_THAT(RowTexts(model), ElementsAre("Ann|North", "|North"));
  model.LogOut("aNN", "NORTH");
  EXPECT_THAT(RowTexts(model), ElementsAre("|North"));
  model.LogIn("Ann", "South", {});
  EXPECT_THAT(RowTexts(model), ElementsAre("|North", "Ann|South"));
}

TEST(UsersModel, FindsItsRowsAfterOthersLeftInAnyOrder) {
  UsersModel model;
  for (int i = 0; i < 100; ++i)
    model.LogIn("user" + std::to_string(i), "North", {});
  for (int i = 0; i < 98; ++i)
    model.LogOut("user" + std::to_string(i * 37 % 100), "North");
  EXPECT_THAT(RowTexts(model), ElementsAre("user26|North", "user63|North"));
}

}  // namespace
}  // namespace corvane
