#include <csignal>
#include <string>

#include <QCoreApplication>
#include <gtest/gtest.h>

#include "platform/process_signals.h"

namespace corvane {
namespace {

TEST(ProcessSignals, EverySignalReachesTheLoopOnce) {
  struct Row {
    int signal;
    std::string call;
  };
  for (const Row& row : {Row{SIGINT, "quit "}, {SIGTERM, "quit "}, {SIGHUP, "reload "}}) {
    std::string calls;
    const ProcessSignals signals([&] { calls += "quit "; }, [&] { calls += "reload "; });
    for (std::string expected; expected.size() < 2 * row.call.size();) {
      ASSERT_EQ(std::raise(row.signal), 0);
      EXPECT_EQ(calls, expected) << "from inside the signal";
      QCoreApplication::processEvents();
      EXPECT_EQ(calls, expected += row.call);
    }
  }
}

}  // namespace
}  // namespace corvane
