#include "console/wnd_settings.h"
#include "tests/console/console_fixture.h"
#include "updater/updater_window.h"

namespace corvane {
namespace {

using UpdatesTest = ConsoleTest;

TEST_F(UpdatesTest, MenuItemShowsANewerVersionOnceAndNothingElse) {
  const auto check = [this] { ChooseInMenuBar("&File", "Check For Updates..."); };
  const auto hasOpened = [this] { return PumpUntil([this] { return IsOpen("UpdaterWindow"); }); };
  check();
  ASSERT_TRUE(PumpUntil([this] { return !myWebServer.requests.empty(); }));
  PumpFor(std::chrono::milliseconds(20));
  EXPECT_FALSE(IsOpen("UpdaterWindow"));

  myWebServer.answers["/applications.xml"] = {
      OkReply("<a><b><AppName>corvaneserver</AppName><CurrentMajorVersion>3</CurrentMajorVersion>"
              "<CurrentBuildVersion>999999</CurrentBuildVersion></b></a>")};
  check();
  ASSERT_TRUE(hasOpened());
  auto* window = Opened<UpdaterWindow>("UpdaterWindow");
  EXPECT_EQ(window->NewVersionText->text(), "3.0.0.999999");
  EXPECT_THAT(myWebServer.requests.back(), testing::HasSubstr("User-Agent: CorvaneServer/"));

  // The open window comes to the front again.
  window->showMinimized();
  check();
  EXPECT_FALSE(window->isMinimized());
  PumpFor(std::chrono::milliseconds(50));
  EXPECT_EQ(Dialogs().size(), 1);
  QTest::keyClick(window, Qt::Key_Escape);
  EXPECT_TRUE(NoneIsOpen());

  // One that opens over a dialog leaves it the focus, and both can be used.
  ChooseInMenuBar("&File", "Settings...");
  auto* settings = Opened<wndSettings>("wndSettings");
  myApp.Updates().CheckForNewVersion(true);
  ASSERT_TRUE(PumpUntil([] { return Dialogs().size() == 2; }));
  window = Opened<UpdaterWindow>("UpdaterWindow");
  EXPECT_TRUE(window->testAttribute(Qt::WA_ShowWithoutActivating));
  Click(window->OKCancelControl1->RightButton);
  ASSERT_TRUE(PumpUntil([] { return Dialogs().size() == 1; }));
  Click(settings->btnCancel);
  EXPECT_TRUE(NoneIsOpen());
  EXPECT_TRUE(myBoxes.empty());
}

}  // namespace
}  // namespace corvane
