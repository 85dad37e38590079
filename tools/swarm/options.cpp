#include "tools/swarm/options.h"

#include <cmath>
#include <limits>
#include <netdb.h>
#include <stdexcept>

#include <QCommandLineParser>

#include "tools/swarm/hostile/attack.h"

namespace corvane::swarm {

namespace {

constexpr int kUsageError = 2;

// First source addresses of players and strangers.
constexpr in_addr_t kPlayers = INADDR_LOOPBACK;
constexpr in_addr_t kStrangers = INADDR_LOOPBACK + (in_addr_t{1} << 16);

// The command line is wrong; the text says why.
class UsageError : public std::runtime_error {
 public:
  explicit UsageError(const QString& text) : std::runtime_error(text.toStdString()) {}
};

struct OptionRow {
  const char* name;
  const char* valueName;  // none: a switch
  const char* defaultValue;
  const char* description;
  const char* modes;  // that take it; none: every mode
};

constexpr OptionRow kOptions[] = {
    {"host", "address", "127.0.0.1", "The server's IPv4 address or name.", nullptr},
    {"port", "number", "12000", "The server's port.", nullptr},
    {"tls", nullptr, nullptr,
     "Connect encrypted (TLS), through a tunnel inside this program, which costs processor time.",
     nullptr},
    {"fingerprint", "hex", nullptr,
     "Connect encrypted, and trust only the certificate with this SHA-256 fingerprint.", nullptr},
    {"network", "name", nullptr, "Network to log into; may be given several times.", nullptr},
    {"networks", "count", nullptr,
     "Log into this many networks, named --network-prefix and a number from 1 on.", nullptr},
    {"network-prefix", "text", "Bench", "Prefix of the names of --networks.", nullptr},
    {"password", "text", "", "Password of the networks, as plain text. Default: none.", nullptr},
    {"users", "count", "25", "Players in each network.", nullptr},
    {"user-prefix", "text", "swarm",
     "Prefix of the user names of a measured run. User names are unique on a server: give each of "
     "several runs its own.",
     nullptr},
    {"seconds", "time", nullptr,
     "How long to send, or to come and go (10); demo and idle: how long to stay (until "
     "interrupted); rush: how long to wait for the greetings (10); hostile: how long to measure "
     "before, during and after (10).",
     nullptr},
    {"leave", "way", "orderly", "How the clients leave: orderly, or abrupt (a reset).", nullptr},
    {"server-pid", "number", nullptr,
     "Process of the server: its processor time and memory are measured too.", nullptr},
    {"measure-idle", nullptr, nullptr,
     "Measure the server's memory for an idle connection (needs --server-pid).",
     "fanout rate idle"},
    {"addresses", "count", "0",
     "Addresses of this machine, 127.0.0.1 and on, that the players come from in turn; 0: the "
     "system chooses.",
     "demo fanout rate idle churn hostile"},
    {"clients", "count", "1000", "rush: clients that connect at the same moment.", "rush"},
    {"rounds", "count", "1", "rush: how many rushes, one after the other.", "rush"},
    {"attack", "name", nullptr, "hostile: the attack, one of those above.", "hostile"},
    {"stranger-addresses", "count", "0",
     "hostile: addresses that the strangers come from, 127.1.0.1 and on.", "hostile"},
    {"reporters", "count", nullptr, "fanout: members of each network that report (all).", "fanout"},
    {"burst", "count", nullptr, "Reports of each reporter in a burst (fanout: 20, rate: 1).",
     "fanout rate"},
    {"rate", "reports", "2", "rate: reports a second of each member.", "rate"},
};

void AddOptions(QCommandLineParser& parser) {
  for (const OptionRow& row : kOptions) {
    const QString value = row.defaultValue;
    const QString hint = value.isEmpty() ? QString() : " Default: " + value + '.';
    parser.addOption({row.name, row.description + hint, row.valueName, value});
  }
}

std::size_t Count(const QCommandLineParser& parser, const QString& name, std::size_t min,
                  std::size_t max) {
  bool isNumber = false;
  const auto value = parser.value(name).toULongLong(&isNumber);
  if (!isNumber || value < min || value > max) {
    throw UsageError(
        QString("--%1 takes a whole number from %2 to %3, not '%4'")
            .arg(name, QString::number(min), QString::number(max), parser.value(name)));
  }
  return static_cast<std::size_t>(value);
}

double PositiveNumber(const QCommandLineParser& parser, const QString& name, double max) {
  bool isNumber = false;
  const double value = parser.value(name).toDouble(&isNumber);
  if (!isNumber || !(value > 0) || value > max) {
    throw UsageError(QString("--%1 takes a number above 0, up to %2, not '%3'")
                         .arg(name, QString::number(max), parser.value(name)));
  }
  return value;
}

sockaddr_in ServerAddress(const QCommandLineParser& parser) {
  const std::size_t port = Count(parser, "port", 1, 65535);
  const QString host = parser.value("host");
  addrinfo hints{};
  hints.ai_family = AF_INET;
  hints.ai_socktype = SOCK_STREAM;
  addrinfo* found = nullptr;
  const int error = getaddrinfo(host.toUtf8().constData(), nullptr, &hints, &found);
  if (error != 0) {
    throw UsageError(QString("--host '%1': %2").arg(host, gai_strerror(error)));
  }
  sockaddr_in address = *reinterpret_cast<const sockaddr_in*>(found->ai_addr);
  freeaddrinfo(found);
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  return address;
}

std::optional<client::Tls> TlsOf(const QCommandLineParser& parser) {
  const auto fingerprint = client::ParseFingerprint(parser.value("fingerprint"));
  if (parser.isSet("fingerprint") && !fingerprint)
    throw UsageError("--fingerprint takes 64 hexadecimal digits");
  if (!parser.isSet("tls") && !fingerprint) return {};
  return client::Tls{fingerprint.value_or(QByteArray()), parser.value("host")};
}

std::vector<std::string> Networks(const QCommandLineParser& parser) {
  const bool isCounted = parser.isSet("networks");
  std::vector<std::string> names;
  for (const QString& name : parser.values("network")) {
    names.push_back(name.toStdString());
  }
  if (isCounted == !names.empty()) {
    throw UsageError("name the networks, with either --network or --networks");
  }
  if (!isCounted) return names;
  const std::size_t count = Count(parser, "networks", 1, 100000);
  const std::string prefix = parser.value("network-prefix").toStdString();
  for (std::size_t i = 1; i <= count; ++i)
    names.push_back(prefix + std::to_string(i));
  return names;
}

LoopbackRange Sources(const QCommandLineParser& parser, const QString& option, in_addr_t first) {
  return {first, Count(parser, option, 0, 65000)};
}

// Of the two networks that a hostile run is given, the second is the strangers'.
void ReadHostile(const QCommandLineParser& parser, Options& options) {
  if (options.networks.size() != 2) {
    throw UsageError("hostile takes two networks: the honest members' and the strangers'");
  }
  options.strangersNetwork = options.networks.back();
  options.networks.pop_back();
  options.strangersSources = Sources(parser, "stranger-addresses", kStrangers);
  const QString name = parser.value("attack");
  options.attack = FindAttack(name.toStdString());
  if (options.attack == nullptr) throw UsageError("there is no attack '" + name + "'");
}

struct ModeRow {
  const char* name;
  Mode mode;
  const char* description;
};

constexpr ModeRow kModes[] = {
    {"demo", Mode::Demo, "players walk, fight, die, leave and come back; prints a line a second"},
    {"fanout", Mode::Fanout,
     "closed loop: in each network reporters send bursts and wait until every member\n"
     "         has every report"},
    {"rate", Mode::Rate,
     "every member reports at a fixed rate; prints the latency of the reports, counted\n"
     "         from the time at which each was due"},
    {"idle", Mode::Idle, "all log in and wait; prints \"ready\" once all are in"},
    {"churn", Mode::Churn, "clients log in, leave at once and come back, over and over"},
    {"rush", Mode::Rush,
     "clients connect at the same moment and wait for the greeting; prints how many were\n"
     "         greeted, refused or left hanging, and when the last was greeted"},
    {"hostile", Mode::Hostile,
     "members report in bursts, and strangers attack the server in the middle third of the\n"
     "         time; prints the latency of the members' reports before, during and after"},
};

QString NamesOfModes() {
  QStringList names;
  for (const ModeRow& row : kModes)
    names += row.name;
  const QString last = names.takeLast();
  return names.join(", ") + " or " + last;
}

Mode ModeOf(const QStringList& arguments) {
  if (arguments.size() == 1) {
    for (const ModeRow& row : kModes) {
      if (arguments[0] == row.name) return row.mode;
    }
  }
  throw UsageError("give one mode: " + NamesOfModes());
}

QString Description() {
  QString text =
      "Simulated players for a Corvane server, over its real protocol. For example:\n"
      "corvane-swarm --network Guild --password secret --users 25 demo\n";
  for (const ModeRow& row : kModes)
    text += QString("\n%1 %2").arg(row.name, -8).arg(row.description);
  text += "\n\nAttacks of hostile:\n";
  for (const NamedAttack& attack : Attacks())
    text += QString("\n%1 %2").arg(attack.name, -14).arg(attack.description);
  return text +
         "\n\nAll but demo print two lines at the end, one to read and one of JSON. fanout, rate "
         "and\n"
         "hostile account for every delivery: the exit code is 0 only if each expected one came,\n"
         "nothing else came, and no client (in hostile: no member) was refused or cut off.";
}

void CheckModeTakesOptions(const QCommandLineParser& parser, const QString& mode) {
  for (const OptionRow& row : kOptions) {
    if (row.modes == nullptr || !parser.isSet(row.name)) continue;
    const QString modes = row.modes;
    if (!modes.split(u' ').contains(mode)) {
      throw UsageError(QString("--%1 goes with %2, not with %3").arg(row.name, modes, mode));
    }
  }
}

Options Read(const QCommandLineParser& parser) {
  Options options;
  options.mode = ModeOf(parser.positionalArguments());
  const QString modeName = parser.positionalArguments().constFirst();
  CheckModeTakesOptions(parser, modeName);
  options.modeName = modeName.toStdString();
  const bool sends =
      options.mode == Mode::Fanout || options.mode == Mode::Rate || options.mode == Mode::Hostile;

  options.server = ServerAddress(parser);
  options.tls = TlsOf(parser);
  if (options.mode != Mode::Rush) options.networks = Networks(parser);
  if (options.mode == Mode::Hostile) ReadHostile(parser, options);
  options.password = parser.value("password").toStdString();
  options.userPrefix = parser.value("user-prefix").toStdString();
  options.sources = Sources(parser, "addresses", kPlayers);
  options.users = Count(parser, "users", sends ? 2 : 1, 100000);
  const bool endsByItself = options.mode != Mode::Demo && options.mode != Mode::Idle;
  if (parser.isSet("seconds") || endsByItself) {
    const double length = parser.isSet("seconds") ? PositiveNumber(parser, "seconds", 86400) : 10;
    options.duration = std::chrono::milliseconds(std::lround(length * 1000));
    if (options.mode == Mode::Hostile) *options.duration *= 3;
  }

  const QString way = parser.value("leave");
  if (way != "orderly" && way != "abrupt") {
    throw UsageError("--leave takes orderly or abrupt, not '" + way + "'");
  }
  options.leave = way == "abrupt" ? LeaveWay::Abrupt : LeaveWay::Orderly;

  if (parser.isSet("server-pid")) {
    options.serverPid =
        static_cast<pid_t>(Count(parser, "server-pid", 1, std::numeric_limits<pid_t>::max()));
  }
  options.measuresIdle = parser.isSet("measure-idle");
  if (options.measuresIdle && !options.serverPid) {
    throw UsageError("--measure-idle needs --server-pid");
  }

  if (sends) {
    options.reporters =
        parser.isSet("reporters") ? Count(parser, "reporters", 1, options.users) : options.users;
  }
  options.clients = Count(parser, "clients", 1, 1'000'000);
  options.rounds = Count(parser, "rounds", 1, 100000);
  if (parser.isSet("burst")) {
    options.burst = Count(parser, "burst", 1, 100000);
  } else {
    options.burst = options.mode == Mode::Rate ? 1 : 20;
  }
  options.reportsPerSecond = PositiveNumber(parser, "rate", 100000);
  return options;
}

}  // namespace

ParsedOptions ParseOptions(const QStringList& arguments) {
  QCommandLineParser parser;
  parser.setApplicationDescription(Description());
  parser.addPositionalArgument("mode", NamesOfModes());
  const QCommandLineOption help({"h", "help"}, "Show this text.");
  const QCommandLineOption listAttacks("list-attacks", "Show the names of the attacks of hostile.");
  const QCommandLineOption version({"v", "version"}, "Show the version.");
  parser.addOptions({help, listAttacks, version});
  AddOptions(parser);

  ParsedOptions result;
  try {
    if (!parser.parse(arguments)) throw UsageError(parser.errorText());
    if (parser.isSet(help)) {
      result.text = parser.helpText()
                        .replace(QCoreApplication::arguments().first(), "corvane-swarm")
                        .toStdString();
    } else if (parser.isSet(version)) {
      result.text = "corvane-swarm " CORVANE_VERSION "\n";
    } else if (parser.isSet(listAttacks)) {
      for (const NamedAttack& attack : Attacks())
        result.text += attack.name + std::string("\n");
    } else {
      result.options = Read(parser);
    }
  } catch (const UsageError& error) {
    result.text = "corvane-swarm: " + std::string(error.what()) + " (see --help)\n";
    result.exitCode = kUsageError;
  }
  return result;
}

}  // namespace corvane::swarm
