#include <cstdint>
#include <string>
#include <string_view>

#include <benchmark/benchmark.h>

#include "buffers/byte_queue.h"
#include "net/frame.h"

namespace corvane {
namespace {

constexpr std::string_view kReport = "1200,845,2,90,1,0";

// So many reports that arrived in one read, cut into messages: the time per report must not depend
// on how many there are.
void CutBurst(benchmark::State& state) {
  BufferPool pool;
  std::string burst;
  for (std::int64_t i = 0; i < state.range(0); ++i)
    burst += CreatePacket(4, kReport);
  for (auto _ : state) {
    ByteQueue queue(pool);
    if (!queue.Append(burst)) state.SkipWithError("no memory");
    while (!queue.IsEmpty()) {
      const Frame frame = ReadFrame(queue.Bytes());
      benchmark::DoNotOptimize(frame.payload);
      queue.Consume(frame.length);
    }
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(CutBurst)->RangeMultiplier(100)->Range(1, 10'000);

void CreateReport(benchmark::State& state) {
  for (auto _ : state)
    benchmark::DoNotOptimize(CreatePacket(5, kReport));
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(CreateReport);

}  // namespace
}  // namespace corvane
