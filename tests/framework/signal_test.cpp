#include "framework/signal.h"

#include <string>

#include <gtest/gtest.h>

namespace corvane {
namespace {

TEST(Signal, CallsWhoIsConnectedInOrderUntilTheConnectionOrTheSignalGoes) {
  std::string heard;
  auto signal = std::make_unique<Signal<char>>();
  SignalConnection first = signal->Connect([&](char event) { heard += event; });
  SignalConnection late;
  SignalConnection third;
  const auto second = signal->Connect([&](char) {
    first.reset();
    third.reset();
    if (!late) late = signal->Connect([&](char) { heard += '4'; });
  });
  third = signal->Connect([&](char) { heard += '3'; });
  (*signal)('1');
  EXPECT_EQ(heard, "1");
  (*signal)('2');
  EXPECT_EQ(heard, "14");
  late = signal->Connect([&](char) { signal.reset(); });
  const auto last = signal->Connect([&](char) { heard += '5'; });
  (*signal)('2');
  EXPECT_EQ(heard, "145");
}

}  // namespace
}  // namespace corvane
