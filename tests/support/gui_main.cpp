#include <QApplication>
#include <QFont>
#include <gtest/gtest.h>

#include "platform/prepare_process.h"
#include "tests/support/test_platform.h"

int main(int argc, char** argv) {
  corvane::PrepareProcess();
  corvane::ChooseTestPlatform();
  const QApplication application(argc, argv);
  QApplication::setQuitOnLastWindowClosed(false);
  // What fits into a window depends on it.
  QApplication::setFont(QFont(QStringLiteral("DejaVu Sans"), 9));
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
