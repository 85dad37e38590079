#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <netinet/in.h>
#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

#include <QStringList>

#include "client/tls.h"
#include "tools/swarm/source_addresses.h"

namespace corvane::swarm {

struct NamedAttack;

enum class Mode { Demo, Fanout, Rate, Idle, Churn, Rush, Hostile };
enum class LeaveWay { Orderly, Abrupt };

// What the command line asks for.
struct Options {
  Mode mode = Mode::Demo;
  std::string modeName;
  sockaddr_in server{};
  std::optional<client::Tls> tls;  // none: not encrypted
  std::vector<std::string> networks;
  std::string password;
  std::size_t users = 0;  // in each network
  LoopbackRange sources;
  std::optional<std::chrono::milliseconds> duration;  // none: until interrupted
  std::string userPrefix;
  LeaveWay leave = LeaveWay::Orderly;
  std::optional<pid_t> serverPid;
  bool measuresIdle = false;
  std::size_t reporters = 0;    // in each network; idle: none
  std::size_t burst = 0;        // fanout, rate
  double reportsPerSecond = 0;  // rate, of each member
  std::size_t clients = 0;      // rush
  std::size_t rounds = 0;       // rush
  // hostile: the attack, and the network of strangers that are members
  const NamedAttack* attack = nullptr;
  std::string strangersNetwork;
  LoopbackRange strangersSources;
};

// Options, or a text to show instead (help or an error) with its exit code.
struct ParsedOptions {
  std::optional<Options> options;
  std::string text;
  int exitCode = 0;
};

// `arguments` begins with the program's name.
ParsedOptions ParseOptions(const QStringList& arguments);

}  // namespace corvane::swarm
