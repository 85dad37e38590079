#include "buffers/output_queue.h"

#include <array>
#include <random>
#include <string>

#include <gtest/gtest.h>

namespace corvane {
namespace {

std::string Content(const OutputQueue& queue) {
  std::array<std::string_view, 3> room;
  std::string content;
  OutputQueue rest = queue;
  while (!rest.IsEmpty()) {
    std::size_t size = 0;
    for (const std::string_view piece : rest.First(room)) {
      content += piece;
      size += piece.size();
    }
    rest.Consume(size);
  }
  return content;
}

// Random operations on queues and on strings: copies and shared pieces, small and large, of one
// writer that reuses its block when no queue refers to it.
TEST(OutputQueue, HoldsTheSameAsStrings) {
  BufferPool pool;
  {
    BlockWriter writer(pool);
    std::array<OutputQueue, 2> queues = {OutputQueue(pool), OutputQueue(pool)};
    std::array<std::string, 2> expected;
    std::mt19937 random(1);
    const auto upTo = [&random](std::size_t most) {
      return std::uniform_int_distribution<std::size_t>(0, most)(random);
    };
    for (int step = 0; step < 3'000; ++step) {
      const std::size_t index = upTo(1);
      std::string bytes(upTo(step % 50 == 0 ? 200'000 : 2'000), '\0');
      for (char& byte : bytes)
        byte = static_cast<char>(upTo(255));
      switch (upTo(3)) {
        case 0:
          EXPECT_TRUE(queues[index].Append(bytes));
          expected[index] += bytes;
          break;
        case 1: {
          const SharedBytes piece = writer.Append(bytes);
          const std::size_t begin = upTo(bytes.size());
          EXPECT_TRUE(queues[0].Append(piece));
          EXPECT_TRUE(queues[1].Append(piece.SubRange(begin, piece.Size() - begin)));
          expected[0] += bytes;
          expected[1] += bytes.substr(begin);
          break;
        }
        default: {
          const std::size_t count =
              upTo(3) == 0 ? expected[index].size() : upTo(expected[index].size());
          queues[index].Consume(count);
          expected[index].erase(0, count);
        }
      }
      ASSERT_EQ(queues[index].Size(), expected[index].size()) << "step " << step;
      ASSERT_TRUE(Content(queues[index]) == expected[index]) << "step " << step;
    }
  }
  EXPECT_EQ(pool.InUse(), 0U);
}

TEST(OutputQueue, TakesLittleMemoryForLittle) {
  BufferPool pool;
  OutputQueue queue(pool);
  EXPECT_TRUE(queue.Append("x"));
  EXPECT_EQ(pool.InUse(), BufferPool::kMinCapacity);
}

TEST(OutputQueue, BytesForManyQueuesAreInMemoryOnce) {
  BufferPool pool;
  const std::string report(1'000, 'r');
  BlockWriter writer(pool);
  std::vector<OutputQueue> queues(100, OutputQueue(pool));
  for (int i = 0; i < 1'000; ++i) {
    const SharedBytes piece = writer.Append(report);
    for (OutputQueue& queue : queues)
      EXPECT_TRUE(queue.Append(piece));
  }
  EXPECT_GE(pool.InUse(), 1'000'000U);
  EXPECT_LT(pool.InUse(), 1'500'000U);
  queues.clear();
  EXPECT_LE(pool.InUse(), BufferPool::kMaxKeptCapacity) << "more than the writer's last block";
}

}  // namespace
}  // namespace corvane
