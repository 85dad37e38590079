#pragma once

#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "tests/support/test_server.h"

namespace corvane {

// A server with the networks A and B, and clients as far as they got.
class SessionTest : public testing::Test {
 protected:
  std::unique_ptr<TestClient> Greeted() {
    auto client = std::make_unique<TestClient>(server.Port());
    EXPECT_EQ(client->Receive(), (WireMessage{1, "Network"}));
    return client;
  }
  std::unique_ptr<TestClient> LoggedIn(const std::string& user, const std::string& network = "A") {
    auto client = std::make_unique<TestClient>(server.Port());
    EXPECT_TRUE(client->LogIn(network, "secret", user)) << user;
    return client;
  }

  TestServer server;
  NetworkRef a = server.AddNetwork("A");
  NetworkRef b = server.AddNetwork("B");
};

}  // namespace corvane
