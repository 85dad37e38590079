#include <algorithm>
#include <memory>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "storage/admins_table.h"
#include "tests/support/test_server.h"

namespace corvane {
namespace {

using namespace std::chrono_literals;
using namespace std::string_literals;

constexpr const char* kProxy = "127.0.0.1";

TEST(ProxiedClients, GoByTheirOwnAddresses) {
  Rules rules = HardenedInAHurry();
  rules.proxyAddresses = AddressRanges(kProxy);
  TestServer server(0, rules);
  server.AddNetwork("A", "secret", 100);
  EXPECT_TRUE(AdminsTable(server.database).Add("Ann", "192.0.2.1", "A"));
  const auto header = [](const std::string& address) {
    return "PROXY TCP" + ((address.find(':') == std::string::npos ? "4 " : "6 ") + address) + " " +
           address + " 1 2\r\n";
  };
  const auto through = [&](const std::string& address) {
    auto client = std::make_unique<TestClient>(server.Port());
    client->SendBytes(header(address));
    return client;
  };
  const auto right = [&](TestClient& client, const std::string& user) {
    EXPECT_TRUE(client.Login("A", "secret", user)) << user;
    client.Send(9, "");
    return client.Receive()->payload;
  };
  const auto impostor = through("192.0.2.2");
  EXPECT_EQ(right(*impostor, "Ann"), "0");
  impostor->Close();
  EXPECT_TRUE(PumpUntil([&] { return server.ActiveCount() == 0; }));
  const auto ann = through("192.0.2.1");
  EXPECT_EQ(right(*ann, "Ann"), "1");

  const auto bob = through("2001:db8:0:0::2");
  EXPECT_EQ(right(*bob, "Bob"), "0");
  server.listener->BanUser(*server.SessionOf("Ann"), "Bob", "x");
  EXPECT_EQ(server.Query("SELECT address FROM bans"), "2001:db8::2;");
  EXPECT_EQ(bob->Receive()->command, 997);
  EXPECT_EQ(through("2001:db8::2")->Receive()->command, 997);
  EXPECT_EQ(through("2001:db8::3")->Receive()->command, 1);
  PumpFor(400ms);
  EXPECT_FALSE(ann->IsClosed());

  // A client's connections are counted for it, or for its /64.
  const std::pair<const char*, const char*> ranges[] = {{"192.0.2.9", "192.0.2.9"},
                                                        {"2001:db8:0:1::1", "2001:db8:0:1:f::2"}};
  for (const auto& range : ranges) {
    std::vector<std::unique_ptr<TestClient>> clients(9);
    std::ranges::generate(clients,
                          [&] { return through(clients[7] ? range.second : range.first); });
    for (const auto& client : clients)
      EXPECT_EQ(client->Receive().has_value(), client != clients.back()) << range.second;
  }

  // The header of somebody who is no proxy is a wrong message, and so is a second one.
  const std::string one = header("192.0.2.7");
  for (const auto& [from, bytes] : {std::pair{kProxy, one + one}, {"127.0.0.2", one}}) {
    TestClient client(server.Port(), from);
    client.SendBytes(bytes);
    EXPECT_EQ(client.Receive()->command, 1) << from;
    EXPECT_TRUE(client.WasClosedByServer()) << from;
  }

  // One line a period for what else comes from the proxy.
  server.status.clear();
  for (int i = 0; i < 3; ++i) {
    TestClient client(server.Port());
    client.Send(1, "A");
    EXPECT_TRUE(client.WasClosedByServer());
  }
  const auto line = [](const char* count) {
    return kProxy + ": Connections Without PROXY Header ("s + count + ")";
  };
  EXPECT_TRUE(PumpUntil([&] { return std::ranges::count(server.status, line("2")) == 1; }));
  EXPECT_EQ(std::ranges::count(server.status, line("1")), 1);
}

}  // namespace
}  // namespace corvane
