#include <QApplication>
#include <gtest/gtest.h>

int main(int argc, char** argv) {
  // Windows that nobody sees, whatever the desktop.
  qputenv("QT_QPA_PLATFORM", "offscreen");
  const QApplication application(argc, argv);
  QApplication::setQuitOnLastWindowClosed(false);
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
