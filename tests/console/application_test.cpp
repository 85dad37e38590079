#include "console/application.h"

#include <QTimer>

#include "console/wnd_message.h"
#include "tests/console/console_fixture.h"
#include "tests/support/leak_counting.h"

namespace corvane {
namespace {

using testing::ElementsAre;

using ApplicationTest = ConsoleTest;

// A message meets a client without a network.
TEST_F(ApplicationTest, ErrorOfAHandlerEndsInTheLastResort) {
  auto& application = static_cast<Application&>(*qApp);
  application.LastResort = [this] {
    CountLeaks(true);
    myApp.LastResort();
    myApp.LastResort();  // speaks once
  };
  const auto ann = LoggedIn("Ann");
  TestClient newcomer(myApp.Listener().Port());
  ASSERT_EQ(newcomer.Receive(), (WireMessage{1, "Network"}));
  const auto ben = LoggedIn("Ben");
  // An error that is thrown through Qt's handling of a click leaves memory of Qt's behind.
  CountLeaks(false);
  ChooseInMenuBar("&File", "Send Message");
  auto* message = Opened<wndMessage>("wndMessage");
  QTest::keyClicks(message->fldText, "hello");
  QTimer::singleShot(0, [&] { Click(message->btnSend); });
  EXPECT_EQ(Application::exec(), 1);
  application.LastResort = nullptr;
  EXPECT_THAT(myBoxes, ElementsAre("An exception of class NilObjectException was not handled.  "
                                   "The application must shut down."));
  EXPECT_TRUE(myApp.IsQuitting());
  EXPECT_EQ(ann->Receive(), (WireMessage{998, "hello"}));
  EXPECT_TRUE(newcomer.HearsNothing());
  EXPECT_TRUE(ben->HearsNothing());
}

}  // namespace
}  // namespace corvane
