#include <gtest/gtest.h>

#include "app/server_application.h"
#include "platform/broken_pipes.h"

int main(int argc, char** argv) {
  corvane::IgnoreBrokenPipes();  // as in the server
  corvane::ServerApplication<QCoreApplication> application(argc, argv);
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
