#include "tools/swarm/options.h"

#include <gtest/gtest.h>

#include "tools/swarm/hostile/attack.h"

namespace corvane::swarm {
namespace {

ParsedOptions Parse(const QString& words) {
  return ParseOptions((QStringLiteral("corvane-swarm ") + words).split(u' '));
}

TEST(Options, HostileTakesTwoNetworksAndAKnownPart) {
  const ParsedOptions parsed = Parse("hostile --network A --network B --seconds 2 --attack rush");
  ASSERT_TRUE(parsed.options) << parsed.text;
  EXPECT_EQ(parsed.options->networks, std::vector<std::string>{"A"});
  EXPECT_EQ(parsed.options->strangersNetwork, "B");
  EXPECT_EQ(parsed.options->duration, std::chrono::seconds(6)) << "before, during and after";
  EXPECT_EQ(parsed.options->attack, FindAttack("rush"));
}

TEST(Options, RefusesWrongCommandLines) {
  for (const char* const words :
       {"hostile --network A --attack rush", "hostile --network A --network B",
        "hostile --network A --network B --attack none", "rate --network A --attack rush",
        "rush --clients 0", "rush --fingerprint 0a", "rate", "fanout --network A --networks 2",
        "nothing --network A"}) {
    const ParsedOptions parsed = Parse(QString::fromLatin1(words));
    EXPECT_FALSE(parsed.options) << words;
    EXPECT_EQ(parsed.exitCode, 2) << words;
  }
  EXPECT_TRUE(Parse("rush --clients 9000 --rounds 3").options);
  const ParsedOptions parsed = Parse("rush --tls --host localhost");
  ASSERT_TRUE(parsed.options && parsed.options->tls);
  EXPECT_EQ(parsed.options->tls->name, "localhost");
}

}  // namespace
}  // namespace corvane::swarm
