#include <QCoreApplication>
#include <gtest/gtest.h>

#include "platform/prepare_process.h"

int main(int argc, char** argv) {
  corvane::PrepareProcess();  // as in the server
  const QCoreApplication application(argc, argv);
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
