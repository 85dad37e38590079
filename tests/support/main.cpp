#include <csignal>

#include <QGuiApplication>
#include <gtest/gtest.h>

int main(int argc, char** argv) {
  std::signal(SIGPIPE, SIG_IGN);  // as in the server
  if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  const QGuiApplication application(argc, argv);
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
