#include <csignal>

#include <QCoreApplication>
#include <gtest/gtest.h>

#include "framework/quit_signals.h"

namespace corvane {
namespace {

TEST(QuitSignals, EverySignalReachesTheLoopOnce) {
  for (const int signal : {SIGINT, SIGTERM}) {
    int quits = 0;
    const QuitSignals signals([&] { ++quits; });
    for (int expected = 1; expected <= 2; ++expected) {
      ASSERT_EQ(std::raise(signal), 0);
      EXPECT_EQ(quits, expected - 1) << "from inside the signal";
      QCoreApplication::processEvents();
      EXPECT_EQ(quits, expected);
    }
  }
}

}  // namespace
}  // namespace corvane
