#include <QGuiApplication>
#include <gtest/gtest.h>

#include "framework/broken_pipes.h"
#include "tests/support/test_platform.h"

int main(int argc, char** argv) {
  corvane::IgnoreBrokenPipes();  // as in the server
  corvane::ChooseTestPlatform();
  const QGuiApplication application(argc, argv);
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
