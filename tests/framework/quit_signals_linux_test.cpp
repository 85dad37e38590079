#include <csignal>

#include <QCoreApplication>
#include <gtest/gtest.h>

#include "framework/quit_signals.h"

namespace corvane {
namespace {

TEST(QuitSignals, EverySignalReachesTheLoopAndNothingElse) {
  for (const int signal : {SIGINT, SIGTERM}) {
    int quits = 0;
    const QuitSignals signals([&] { ++quits; });
    ASSERT_EQ(std::raise(signal), 0);
    EXPECT_EQ(quits, 0);  // not from inside the signal
    QCoreApplication::processEvents();
    EXPECT_EQ(quits, 1);
    QCoreApplication::processEvents();
    EXPECT_EQ(quits, 1);
    ASSERT_EQ(std::raise(signal), 0);
    QCoreApplication::processEvents();
    EXPECT_EQ(quits, 2);
  }
}

TEST(QuitSignals, TheSystemsHandlingComesBack) {
  const auto handler = [] {
    struct sigaction action {};
    sigaction(SIGTERM, nullptr, &action);
    return action.sa_handler;
  };
  const auto before = handler();
  {
    const QuitSignals signals([] {});
    EXPECT_NE(handler(), before);
  }
  EXPECT_EQ(handler(), before);
}

}  // namespace
}  // namespace corvane
