#include <QGuiApplication>
#include <gtest/gtest.h>

#include "framework/broken_pipes.h"

int main(int argc, char** argv) {
  corvane::IgnoreBrokenPipes();  // as in the server
  if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  const QGuiApplication application(argc, argv);
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
