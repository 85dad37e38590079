#include <gtest/gtest.h>

#include "console/application.h"

int main(int argc, char** argv) {
  // Windows that nobody sees, whatever the desktop.
  if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  corvane::Application application(argc, argv);
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
