#include <gtest/gtest.h>

#include "app/server_application.h"
#include "platform/prepare_process.h"

int main(int argc, char** argv) {
  corvane::PrepareProcess();  // as in the server
  corvane::ServerApplication<QCoreApplication> application(argc, argv);
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
