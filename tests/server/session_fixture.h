#pragma once

#include <gmock/gmock.h>

#include "tests/support/test_server.h"

namespace corvane {

// A server with the networks A and B, and clients at each stage of the login.
class SessionTest : public testing::Test {
 protected:
  std::unique_ptr<TestClient> Greeted() {
    auto client = std::make_unique<TestClient>(server.Port());
    EXPECT_EQ(client->Receive(), (WireMessage{1, "Network"}));
    return client;
  }
  std::unique_ptr<TestClient> LoggedIn(const std::string& user, const std::string& network = "A",
                                       const char* from = "127.0.0.1") {
    auto client = std::make_unique<TestClient>(server.Port(), from);
    EXPECT_TRUE(client->Login(network, "secret", user)) << user;
    return client;
  }

  // Sends a login step. Returns its answer, "OK" or "FAIL".
  static std::string Ask(TestClient& client, std::int32_t step, const std::string& payload) {
    client.Send(step, payload);
    const auto answer = client.Receive();
    return answer && answer->command == step + 1 ? answer->payload : "no answer";
  }

  // Makes the session queue what its client has sent, without handling any of it.
  static void TakeIn(ClientSocket& session) {
    while (!session.IsDue())
      session.Poll();
  }

  // Makes the session handle a message at once.
  static void Receive(ClientSocket& session, std::int32_t command, std::string_view payload) {
    struct Opened : ClientSocket {
      using ClientSocket::ReceivedMessage;
    };
    (session.*&Opened::ReceivedMessage)(command, payload);
  }

  TestServer server;
  NetworkRef a = server.AddNetwork("A");
  NetworkRef b = server.AddNetwork("B");
};

// Ann and Bob are logged in to A, Eve to B; Bob has another address.
class UsersTest : public SessionTest {
 protected:
  UsersTest() { server.status.clear(); }

  std::unique_ptr<TestClient> ann = LoggedIn("Ann");
  std::unique_ptr<TestClient> bob = LoggedIn("Bob", "A", "127.0.0.2");
  std::unique_ptr<TestClient> eve = LoggedIn("Eve", "B");
};

}  // namespace corvane
