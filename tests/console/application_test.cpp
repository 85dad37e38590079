#include "console/application.h"

#include <stdexcept>
#include <string>

#include <QTimer>
#include <gtest/gtest.h>

using namespace corvane;

TEST(Application, ErrorOfAHandlerEndsInTheLastResort) {
  auto& application = static_cast<Application&>(*qApp);
  std::string what;
  application.LastResort = [&] {
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
  application.LastResort = nullptr;
}
