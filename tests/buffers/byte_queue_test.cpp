#include "buffers/byte_queue.h"

#include <random>
#include <string>

#include <gtest/gtest.h>

namespace corvane {
namespace {

// Random operations on a queue and on a string, long enough for every way of making room: a new
// buffer, a move to the front, growth.
TEST(ByteQueue, HoldsTheSameAsAString) {
  BufferPool pool;
  ByteQueue queue(pool);
  ByteQueue other(pool);
  std::string expected;
  std::mt19937 random(1);
  const auto upTo = [&random](std::size_t most) {
    return std::uniform_int_distribution<std::size_t>(0, most)(random);
  };
  for (int step = 0; step < 20'000; ++step) {
    const std::string bytes(upTo(step % 100 == 0 ? 20'000 : 300), static_cast<char>(step));
    switch (upTo(6)) {
      case 0:
        queue.Truncate(expected.size() - expected.size() / 10);
        expected.resize(expected.size() - expected.size() / 10);
        break;
      case 1:
        EXPECT_TRUE(other.Append(bytes));
        EXPECT_TRUE(queue.TakeAll(other));
        expected += bytes;
        EXPECT_TRUE(other.IsEmpty());
        break;
      case 2:
      case 3: {
        const std::size_t count = upTo(expected.size());
        queue.Consume(count);
        expected.erase(0, count);
        break;
      }
      default:
        EXPECT_TRUE(queue.Append(bytes));
        expected += bytes;
    }
    ASSERT_EQ(queue.Bytes(), expected) << "step " << step;
  }
}

}  // namespace
}  // namespace corvane
