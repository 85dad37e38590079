#pragma once

#include <cstdint>
#include <exception>
#include <memory>
#include <string>
#include <vector>

#include <QTemporaryDir>

#include "geo/location_lookup.h"
#include "net/poll_loop.h"
#include "server/client_socket.h"
#include "server/map_socket.h"
#include "storage/database_connection.h"
#include "tests/support/other_program.h"
#include "tests/support/test_client.h"

namespace corvane {

// The hardened rules with times so short that a test can wait for their ends.
Rules HardenedInAHurry();

// A listener on a loopback port, a free one unless one is named, with a database of its own made by
// the installer's script.
class TestServer {
 public:
  explicit TestServer(std::int32_t port = 0, const Rules& rules = Rules::Classic(),
                      const ConnectionMemory::Limits& limits = {});
  ~TestServer();
  TestServer(const TestServer&) = delete;
  TestServer& operator=(const TestServer&) = delete;

  std::int32_t Port() const { return listener->Port(); }
  NetworkRef AddNetwork(const std::string& name, const std::string& password = "secret",
                        std::int32_t maxUsers = 10, bool enabled = true);
  std::size_t ActiveCount() const { return listener->ActiveConnections()->size(); }
  std::shared_ptr<ClientSocket> Active(std::size_t index) const;
  // The session of the name; none if there is none.
  std::shared_ptr<ClientSocket> SessionOf(const std::string& userName) const;

  // Runs statements as another program at the same database.
  std::string Query(const std::string& statements) const;

  // What is wrong with the listener's indexes and seats, held against a walk over the active
  // connections; empty when all is well.
  std::string Fault() const;

  // The status lines; and "in <name>", "out <name>".
  std::vector<std::string> status;
  std::vector<std::string> events;
  // Errors that no handler caught.
  std::vector<std::string> uncaught;

  QTemporaryDir folder;
  PollLoop loop;
  DatabaseConnection database;
  LocationLookup locations{"Corvane-Test/1.2", folder.path()};
  std::shared_ptr<MapSocket> listener;

 private:
  std::vector<SignalConnection> myConnections;
};

}  // namespace corvane
