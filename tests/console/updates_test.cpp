#include <gmock/gmock.h>

#include <QTest>
#include <gtest/gtest.h>

#include "tests/console/console_fixture.h"
#include "updater/updater_window.h"

namespace corvane {
namespace {

using UpdatesTest = ConsoleTest;

TEST_F(UpdatesTest, MenuItemShowsANewerVersionOnceAndNothingElse) {
  const auto check = [this] { ChooseInMenuBar("&File", "Check For Updates..."); };
  const auto hasOpened = [this] {
    return PumpUntil([this] { return Opened<UpdaterWindow>("UpdaterWindow") != nullptr; });
  };
  check();
  ASSERT_TRUE(PumpUntil([this] { return !myUpdateService.requests.empty(); }));
  PumpFor(std::chrono::milliseconds(20));
  EXPECT_EQ(Opened<UpdaterWindow>("UpdaterWindow"), nullptr);

  myUpdateService.answers["/applications.xml"] = {
      OkReply("<a><b><AppName>corvaneserver</AppName><CurrentMajorVersion>3</CurrentMajorVersion>"
              "<CurrentBuildVersion>999999</CurrentBuildVersion></b></a>")};
  check();
  ASSERT_TRUE(hasOpened());
  auto* window = Opened<UpdaterWindow>("UpdaterWindow");
  EXPECT_EQ(window->NewVersionText->text(), "3.0.0.999999");
  EXPECT_THAT(myUpdateService.requests.back(), testing::HasSubstr("User-Agent: CorvaneServer/"));

  // The one that is open comes to the front again.
  window->showMinimized();
  check();
  EXPECT_FALSE(window->isMinimized());
  PumpFor(std::chrono::milliseconds(50));
  EXPECT_EQ(myWindow->findChildren<QDialog*>().size(), 1);
  QTest::keyClick(window, Qt::Key_Escape);
  EXPECT_TRUE(NoneIsOpen());
  check();
  EXPECT_TRUE(hasOpened());
  EXPECT_TRUE(myBoxes.empty());
}

}  // namespace
}  // namespace corvane
