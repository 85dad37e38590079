#pragma once

#include <exception>
#include <memory>

#include <QTemporaryDir>

#include "geo/location_lookup.h"
#include "net/poll_loop.h"
#include "server/client_socket.h"
#include "server/map_socket.h"
#include "storage/database_connection.h"
#include "tests/support/other_program.h"
#include "tests/support/test_client.h"

namespace corvane {

// The hardened rules with times short enough for tests.
Rules HardenedInAHurry();

// A listener on a loopback port (0: any free one), with a new database made by the installer's
// script.
class TestServer {
 public:
  explicit TestServer(std::int32_t port = 0, const Rules& rules = Rules::Classic(),
                      const ConnectionMemory::Limits& limits = {});

  std::int32_t Port() const { return listener->Port(); }
  NetworkRef AddNetwork(const std::string& name, const std::string& password = "secret",
                        std::int32_t maxUsers = 10, bool enabled = true);
  std::size_t ActiveCount() const { return listener->ActiveConnections()->size(); }
  std::shared_ptr<ClientSocket> Active(std::size_t index) const;
  // nullptr if no session has that name.
  std::shared_ptr<ClientSocket> SessionOf(const std::string& userName) const;

  // Runs statements on the database as another program.
  std::string Query(const std::string& statements) const;

  // Compares the listener's indexes and seats with a walk over the active connections. Returns the
  // first difference; empty if there is none.
  std::string Fault() const;

  // The status lines; and the events "in <name>", "out <name>".
  std::vector<std::string> status;
  std::vector<std::string> events;
  // Class names of uncaught exceptions.
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
