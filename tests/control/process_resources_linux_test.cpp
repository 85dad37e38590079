#include <unistd.h>

#include <gtest/gtest.h>

#include "control/process_resources.h"

namespace corvane {
namespace {

// Wine counts no handles.
TEST(ProcessResources, CountOpenDescriptors) {
  const std::uint64_t before = OpenDescriptors();
  const int one = dup(STDERR_FILENO);
  EXPECT_EQ(OpenDescriptors(), before + 1);
  close(one);
}

}  // namespace
}  // namespace corvane
