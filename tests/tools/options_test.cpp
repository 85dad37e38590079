#include "tools/swarm/options.h"

#include <gtest/gtest.h>

namespace corvane::swarm {
namespace {

ParsedOptions Parse(const char* commandLine) {
  return ParseOptions(
      QStringLiteral("corvane-swarm %1").arg(QLatin1String(commandLine)).split(' '));
}

TEST(Options, AreReadWithTheirDefaults) {
  const ParsedOptions parsed = Parse("fanout --network A --network B --users 30 --reporters 5");
  ASSERT_TRUE(parsed.options) << parsed.text;
  EXPECT_EQ(parsed.options->networks, (std::vector<std::string>{"A", "B"}));
  EXPECT_EQ(parsed.options->users, 30U);
  EXPECT_EQ(parsed.options->reporters, 5U);
  EXPECT_EQ(parsed.options->burst, 20U);
  EXPECT_EQ(parsed.options->connectAtOnce, 2U);
  EXPECT_EQ(parsed.options->duration, std::chrono::seconds(10));
  EXPECT_EQ(ntohs(parsed.options->server.sin_port), 12000);

  EXPECT_EQ(Parse("rate --networks 2 --network-prefix N").options->networks,
            (std::vector<std::string>{"N1", "N2"}));
  EXPECT_FALSE(Parse("demo --network A").options->duration);
}

TEST(Options, BadOnesAreRefusedByName) {
  const std::pair<const char*, const char*> table[] = {
      {"--network A", "one mode"},
      {"walk --network A", "one mode"},
      {"demo", "name the networks"},
      {"demo --network A --networks 3", "name the networks"},
      {"rate --network A --burst 3", "--burst belongs to the mode fanout"},
      {"rate --network A --users 1", "--users"},
      {"rate --network A --rate 0", "--rate"},
      {"rate --network A --seconds nan", "--seconds"},
      {"fanout --network A --users 5 --reporters 6", "--reporters"},
      {"demo --network A --port 65536", "--port"},
      {"demo --network A --leave never", "--leave"},
      {"rate --network A --measure-idle", "--server-pid"},
      {"demo --network A --colour red", "colour"}};
  for (const auto& [commandLine, complaint] : table) {
    const ParsedOptions parsed = Parse(commandLine);
    EXPECT_FALSE(parsed.options) << commandLine;
    EXPECT_EQ(parsed.exitCode, 2) << commandLine;
    EXPECT_NE(parsed.text.find(complaint), std::string::npos) << parsed.text;
  }
}

}  // namespace
}  // namespace corvane::swarm
