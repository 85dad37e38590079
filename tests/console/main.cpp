#include <gtest/gtest.h>

#include "console/application.h"
#include "platform/prepare_process.h"
#include "tests/support/test_platform.h"

int main(int argc, char** argv) {
  corvane::PrepareProcess();
  corvane::ChooseTestPlatform();
  corvane::Application application(argc, argv);
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
