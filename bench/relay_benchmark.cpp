#include <algorithm>
#include <cstdint>
#include <memory>
#include <string>

#include <benchmark/benchmark.h>

#include "bench/sink.h"
#include "net/descriptor_limit.h"
#include "tests/support/flush.h"
#include "tests/support/test_server.h"

namespace corvane {
namespace {

// One network with so many members, all of whom read.
struct Crowd {
  explicit Crowd(std::int64_t members) {
    RaiseDescriptorLimit();
    server.AddNetwork("Bench", "secret", 1'000'000);
    for (std::int64_t i = 0; i < members; ++i) {
      sink.LogIn(server.Port(), "Bench", "secret", "member " + std::to_string(i));
      const std::size_t expected = static_cast<std::size_t>(i) + 1;
      PumpUntil([&] { return server.events.size() == expected; });
    }
  }

  // Whether some reader has not taken what it was sent.
  bool IsBehind() const {
    const auto connections = server.listener->ActiveConnections();
    return std::ranges::any_of(
        *connections, [](const auto& connection) { return connection->BytesLeftToSend() > 0; });
  }

  TestServer server;
  Sink sink;
};

// A report to so many recipients: a record, a packet, an append for each, and every twentieth time
// the flush with one send for each. Items are deliveries.
void Relay(benchmark::State& state) {
  constexpr std::int64_t kReportsPerFlush = 20;
  const std::int64_t recipients = state.range(0);
  Crowd crowd(recipients + 1);
  const std::shared_ptr<ClientSocket> sender = crowd.server.Active(0);
  for (auto _ : state) {
    for (std::int64_t i = 0; i < kReportsPerFlush; ++i) {
      ++sender->X;
      crowd.server.listener->BroadcastPosition(*sender);
    }
    FlushNow(crowd.server.loop);
    if (crowd.IsBehind()) {
      // The readers are behind: not the server's time.
      state.PauseTiming();
      PumpUntil([&] { return !crowd.IsBehind(); });
      state.ResumeTiming();
    }
  }
  if (crowd.server.ActiveCount() != static_cast<std::size_t>(recipients) + 1) {
    state.SkipWithError("a member was lost");
  }
  state.SetItemsProcessed(state.iterations() * kReportsPerFlush * recipients);
}
BENCHMARK(Relay)->Arg(10)->Arg(100)->Arg(1'000);

// A client that connects and logs in, with the sink's part of it, while so many members are there.
void LogIn(benchmark::State& state) {
  Crowd crowd(state.range(0));
  std::size_t expected = crowd.server.events.size();
  std::int64_t number = 0;
  for (auto _ : state) {
    crowd.sink.LogIn(crowd.server.Port(), "Bench", "secret", "late " + std::to_string(++number));
    ++expected;
    PumpUntil([&] { return crowd.server.events.size() == expected; });
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(LogIn)->Arg(0)->Arg(1'000)->Iterations(500);

}  // namespace
}  // namespace corvane
