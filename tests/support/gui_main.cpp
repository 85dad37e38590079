#include <QApplication>
#include <gtest/gtest.h>

#include "tests/support/test_platform.h"

int main(int argc, char** argv) {
  corvane::ChooseTestPlatform();
  const QApplication application(argc, argv);
  QApplication::setQuitOnLastWindowClosed(false);
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
