#include "console/application.h"

#include <chrono>
#include <stdexcept>
#include <string>

#include <QCloseEvent>
#include <QTimer>
#include <QWidget>
#include <gtest/gtest.h>

using namespace corvane;

namespace {

// Ends the loop through the application's hooks and forgets them.
class ApplicationTest : public testing::Test {
 protected:
  ~ApplicationTest() override {
    myApplication.LastResort = nullptr;
    myApplication.Quit = nullptr;
  }

  Application& myApplication = static_cast<Application&>(*qApp);
};

}  // namespace

TEST_F(ApplicationTest, ErrorOfAHandlerEndsInTheLastResort) {
  std::string what;
  myApplication.LastResort = [&] {
    try {
      throw;
    } catch (const std::exception& error) {
      what = error.what();
    }
    Application::exit(1);
  };
  QTimer::singleShot(0, [] { throw std::runtime_error("lost"); });
  EXPECT_EQ(Application::exec(), 1);
  EXPECT_EQ(what, "lost");
}

TEST_F(ApplicationTest, NoWindowVetoesARequestToQuit) {
  struct Stubborn : QWidget {
    void closeEvent(QCloseEvent* event) override { event->ignore(); }
  } window;
  window.show();
  myApplication.Quit = [] { Application::exit(7); };
  QTimer::singleShot(0, [] { Application::quit(); });
  QTimer vetoed;
  QObject::connect(&vetoed, &QTimer::timeout, [] { Application::exit(1); });
  vetoed.start(std::chrono::seconds(5));
  EXPECT_EQ(Application::exec(), 7);
}

TEST_F(ApplicationTest, HasItsIconInEverySize) {
  for (const int size : {16, 24, 32, 48, 64, 128, 256}) {
    EXPECT_EQ(Application::windowIcon().pixmap(size).toImage().width(), size);
  }
}
