#include <array>
#include <fcntl.h>
#include <unistd.h>
#include <vector>

#include <gtest/gtest.h>

#include "framework/message_box.h"
#include "framework/standard_output.h"

namespace corvane {
namespace {

using namespace std::string_literals;

// Standard output turned into a pipe of the smallest size while the object lives.
class PipeForOutput {
 public:
  PipeForOutput() {
    EXPECT_EQ(pipe2(myEnds.data(), O_CLOEXEC), 0);
    EXPECT_GT(fcntl(myEnds[1], F_SETPIPE_SZ, 4096), 0);
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

  // What is in the pipe now.
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

TEST(StandardOutput, ControlCharactersAreEscaped) {
  struct Case {
    std::string text, escaped;
  };
  const std::vector<Case> cases = {
      {"plain text: \xC3\xA9", "plain text: \xC3\xA9"},
      {"two\nlines\r\tand a tab", "two\\nlines\\x0D\\tand a tab"},
      {"\x1B[2J\x7F\0"s, "\\x1B[2J\\x7F\\x00"},
      {"\xC2\x9B"
       "2J\xC2\xA0",
       "\\x9B2J\xC2\xA0"},
      {"\x9B"
       "2J \xE9",
       "\\x9B2J \xC3\xA9"},
      {"\xC2", "\xC3\x82"},
  };
  for (const Case& c : cases)
    EXPECT_EQ(Escaped(c.text), c.escaped);
}

TEST(StandardOutput, ReaderThatDoesNotKeepUpLosesLinesAndIsTold) {
  constexpr int kLines = 3000;  // with the text below, more than the pipe and the reserve hold
  const std::string filling(1000, '.');
  std::string received;
  {
    PipeForOutput pipe;
    StandardOutput output;
    for (int i = 0; i < kLines; ++i)
      output.WriteLine(std::to_string(i) + filling);
    for (int i = 0; i < 500; ++i) {
      received += pipe.Read();
      output.WriteLine("more");
    }
    received += pipe.Read();
  }
  int expected = 0;
  int dropped = 0;
  int more = 0;
  std::size_t start = 0;
  for (std::size_t end = received.find('\n'); end != std::string::npos;
       start = end + 1, end = received.find('\n', start)) {
    const std::string line = received.substr(start, end - start);
    if (line == "more") {
      ++more;
    } else if (line.ends_with(" lines dropped)")) {
      EXPECT_EQ(more, 0);
      dropped += std::stoi(line.substr(1));
    } else {
      ASSERT_EQ(line, std::to_string(expected++) + filling);
    }
  }
  EXPECT_EQ(start, received.size());
  EXPECT_GT(expected, 1000);
  EXPECT_GT(dropped, 1000);
  EXPECT_GT(more, 0);
}

TEST(StandardOutput, ReaderThatIsGoneEndsTheLog) {
  PipeForOutput pipe;
  StandardOutput output;
  output.WriteLine("one");
  EXPECT_EQ(pipe.Read(), "one\n");
  pipe.CloseReader();
  output.WriteLine("two");
  PipeForOutput other;
  output.WriteLine("three");
  EXPECT_EQ(other.Read(), "");
}

TEST(MessageToStandardError, KeepsItsLinesAndAnswersForNobody) {
  testing::internal::CaptureStderr();
  const auto acknowledged =
      MessageToStandardError({MessageBox::Kind::Message, "", "one:\n\ntwo\x1B"});
  const auto refused = MessageToStandardError({MessageBox::Kind::Question, "", "sure?"});
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "one:\n\ntwo\\x1B\nsure?\n");
  EXPECT_EQ(acknowledged, MessageBox::Answer::OK);
  EXPECT_EQ(refused, MessageBox::Answer::No);
}

}  // namespace
}  // namespace corvane
