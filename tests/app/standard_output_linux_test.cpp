#include <array>
#include <fcntl.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "app/line_writer.h"
#include "tests/support/test_client.h"

namespace corvane {
namespace {

// Replaces standard output by a pipe as long as it exists.
class PipeForOutput {
 public:
  PipeForOutput() {
    EXPECT_EQ(pipe2(myEnds.data(), O_CLOEXEC), 0);
    EXPECT_GT(fcntl(myEnds[1], F_SETPIPE_SZ, 65536), 0);
    EXPECT_GE(dup2(myEnds[1], STDOUT_FILENO), 0);
    close(myEnds[1]);
  }
  ~PipeForOutput() {
    dup2(mySaved, STDOUT_FILENO);
    close(mySaved);
    CloseReader();
  }
  PipeForOutput(const PipeForOutput&) = delete;
  PipeForOutput& operator=(const PipeForOutput&) = delete;

  // Reads what the pipe holds now.
  std::string Read() {
    fcntl(myEnds[0], F_SETFL, O_NONBLOCK);
    std::array<char, 65536> bytes{};
    const ssize_t count = read(myEnds[0], bytes.data(), bytes.size());
    return count > 0 ? std::string(bytes.data(), static_cast<std::size_t>(count)) : std::string();
  }
  void CloseReader() {
    if (myEnds[0] >= 0) close(myEnds[0]);
    myEnds[0] = -1;
  }

 private:
  int mySaved = dup(STDOUT_FILENO);
  std::array<int, 2> myEnds{};
};

TEST(StandardOutput, SlowReaderLosesLinesAndGetsTheirNumber) {
  constexpr int kLines = 3000;  // with the text below, more than the pipe and the buffer hold
  const std::string filling(1000, '.');
  std::string received;
  {
    PipeForOutput pipe;
    StandardOutput output;
    for (int i = 0; i < kLines; ++i)
      output.WriteLine(std::to_string(i) + filling);
    const auto holds = [&](std::size_t bytes) {
      received += pipe.Read();
      return received.size() >= bytes;
    };
    EXPECT_TRUE(PumpUntil([&] { return holds(1'000'000); }));
    output.WriteLine("more");
    EXPECT_TRUE(PumpUntil([&] { return holds(1) && received.ends_with("more\n"); }));
  }
  const std::size_t note = received.find('(');
  ASSERT_NE(note, std::string::npos);
  const int dropped = std::stoi(received.substr(note + 1));
  EXPECT_GT(dropped, 1000);
  EXPECT_LT(dropped, kLines - 1000);
  std::string expected;
  for (int i = 0; i < kLines - dropped; ++i)
    expected += std::to_string(i) + filling + '\n';
  expected += '(' + std::to_string(dropped) + " lines dropped)\nmore\n";
  EXPECT_TRUE(received == expected);
}

TEST(StandardOutput, LastLinesAreWrittenAtTheEnd) {
  PipeForOutput pipe;
  {
    StandardOutput output;
    output.WriteLine("one");
  }
  EXPECT_EQ(pipe.Read(), "one\n");
}

TEST(StandardOutput, ClosedPipeEndsTheLog) {
  PipeForOutput pipe;
  auto output = std::make_optional<StandardOutput>();
  output->WriteLine("one");
  output->WriteLine("two");
  EXPECT_EQ(pipe.Read(), "");
  EXPECT_TRUE(PumpUntil([&] { return pipe.Read() == "one\ntwo\n"; }));
  pipe.CloseReader();
  output->WriteLine("three");
  PumpFor(std::chrono::milliseconds(40));
  PipeForOutput other;
  output->WriteLine("four");
  output.reset();
  EXPECT_EQ(other.Read(), "");
}

}  // namespace
}  // namespace corvane
