#include "control/ctl/command_table.h"

namespace corvane::ctl {
namespace {

constexpr Argument kNetwork{"name", "The network."};
constexpr Argument kUser{"user", "The user's name, or ADDRESS:PORT as \"users\" shows it."};
constexpr Argument kReason{"reason", "The reason; the user sees it."};
constexpr Option kIsName{"name", nullptr, "USER is a name, even if it looks like ADDRESS:PORT."};
constexpr Option kOneNetwork{"network", "NAME", "Only this network."};
constexpr Option kForce{"force", nullptr, "Even if that ends the server."};
constexpr Option kDomain{"domain", "NAME", "The server's name on the internet."};
constexpr Argument kOptionalReason{"reason", "The reason; the user sees it.", false, true};
constexpr Option kFor{"for", "TIME", "How long: 90s, 30m, 2h, 2d or 1w. Default: for ever."};
constexpr Option kMaxUsers{"max-users", "NUMBER", "Seats, 1 to 1000."};
constexpr Option kNewMaxUsers{"max-users", "NUMBER", "Seats, 1 to 1000. Default: 5."};

constexpr Option kCommonOptions[] = {
    {"data-folder", "FOLDER",
     "The server's data folder. Default: your own; if no server runs there, the system service's."},
    {"instance", "NAME", "The server of corvane-serverd@NAME."},
    {"all", nullptr, "For \"status\": a line for the system service and each of its instances."},
    {"json", nullptr, "Print the answers as the server sends them, one JSON object a line."},
    {"help", nullptr, "Show this help.", "h"},
    {"version", nullptr, "Show the version.", "v"},
};

const std::vector<Command> kCommands = {
    {"status",
     "Shows the rules, port, load and networks of the server.",
     {},
     {{"check", nullptr,
       "Only check that it answers within 5 s, listens, is quick and can store. Exits with 1 if "
       "not."}}},
    {"metrics",
     "Prints the server's figures in the text format of Prometheus.",
     {},
     {{"server", "NAME", "Label each figure with this name, for several servers."}}},
    {"users",
     "Lists the users who are logged in.",
     {},
     {kOneNetwork},
     {"name", "network", "address"}},
    {"networks", "Lists the networks.", {}, {}, {"name", "users", "max-users", "enabled"}},
    {.words = "bans import",
     .description = "Bans the addresses and ranges of a list, one a line; what follows a # is "
                    "ignored. Stores all of them, or none if a line is wrong.",
     .arguments = {{"file", "The list."}, {"reason", "The reason for all of them.", false, true}},
     .options = {kFor,
                 {"skip", nullptr, "Leave out lines that are wrong."},
                 {"force", nullptr, "Even ranges wider than /8."}},
     .joinsWords = true,
     .takesFile = true,
     .isSlow = true},
    {"bans export", "Prints the banned addresses and ranges as a list.", {}},
    {"bans",
     "Lists the bans, or the banned ranges.",
     {},
     {{"ranges", nullptr, "The ranges."}},
     {"id", "address", "by", "reason", "date", "network", "ends", "left"}},
    {"admins", "Lists the administrators.", {}, {}, {"id", "name", "network", "address"}},
    {"settings",
     "Lists the settings as the next start reads them; \"status\" shows what is in force.",
     {},
     {},
     {"name", "value"}},
    {"tunnel stunnel",
     "Prints a configuration of stunnel that encrypts connections.",
     {},
     {kDomain}},
    {"tunnel haproxy",
     "Prints a configuration of HAProxy that encrypts connections.",
     {},
     {kDomain}},
    {"tunnel client",
     "Prints a configuration of stunnel for players whose client cannot encrypt.",
     {},
     {kDomain}},
    {.words = "check-reach",
     .description = "Tries to reach a server, here or elsewhere, as a client does, and shows what "
                    "fails. Needs no server on this machine.",
     .arguments = {{"host", "HOST or HOST:PORT. Default port: 12000, with --tls 12443."}},
     .options = {{"tls", nullptr, "Encrypted."},
                 {"fingerprint", "HEX", "Encrypted, trusting only this certificate (SHA-256)."}},
     .asksNoServer = true},
    {.words = "network add",
     .description = "Adds a network. Asks for its password, or reads it from standard input.",
     .arguments = {kNetwork},
     .options = {kNewMaxUsers, {"disabled", nullptr, "Do not let users in yet."}},
     .password = Password::Always},
    {.words = "network edit",
     .description = "Changes a network for users who log in from now on.",
     .arguments = {kNetwork},
     .options = {kMaxUsers,
                 {"enable", nullptr, "Let users in."},
                 {"disable", nullptr, "Stop letting users in."}},
     .password = Password::IfAsked,
     .needsOption = true},
    {"network delete",
     "Tells a network's users and asks them to leave, then deletes it, also from the database.",
     {kNetwork},
     {kForce}},
    {"network export",
     "Prints a network with its password and administrators, for \"network import\".",
     {kNetwork},
     {{"bans", nullptr, "Its bans, too."}}},
    {.words = "network import",
     .description = "Adds a network that \"network export\" has printed. Refused if there is one "
                    "of its name.",
     .arguments = {{"file", "The file."}},
     .takesFile = true,
     .isSlow = true},
    {"network disconnect", "Disconnects a network's users; they may reconnect.", {kNetwork}},
    {.words = "kick",
     .description = "Asks a user to leave.",
     .arguments = {kUser, kReason},
     .options = {kIsName},
     .joinsWords = true},
    {.words = "ban",
     .description = "Bans a user's address and asks the user to leave. Under classic rules the "
                    "user stays connected until the client disconnects.",
     .arguments = {kUser, kOptionalReason},
     .options = {kIsName, kFor},
     .joinsWords = true},
    {.words = "ban-address",
     .description = "Bans an address.",
     .arguments = {{"address", "The IPv4 or IPv6 address."}, kOptionalReason},
     .options = {{"network", "NAME", "The network to record with the ban, which applies to all."},
                 kFor},
     .joinsWords = true},
    {.words = "ban-range",
     .description = "Bans a range of addresses and disconnects the clients in it.",
     .arguments = {{"range", "203.0.113.0/24, or 203.0.113.7-203.0.113.99."}, kOptionalReason},
     .options = {kFor,
                 {"force", nullptr, "Even if it is wider than /8."},
                 {"dry-run", nullptr, "Only show how many clients it would disconnect."}},
     .joinsWords = true},
    {"unban-range",
     "Lifts a banned range.",
     {{"range", "The range, or its number as \"bans --ranges\" shows it."}}},
    {"unban",
     "Lifts all bans of an address, or one ban.",
     {{"ban", "The address, or the ban's number as \"bans\" shows it."}}},
    {"disconnect", "Ends a connection at once.", {kUser}, {kIsName}},
    {"grant",
     "Makes a user an administrator.",
     {kUser},
     {kIsName,
      {"network", "NAME", "In this network; for a user who is not logged in."},
      {"address", "ADDRESS", "From this address; for a user who is not logged in."}}},
    {"revoke",
     "Revokes an administrator's rights.",
     {{"admin", "The name, or the number as \"admins\" shows it."}},
     {{"network", "NAME", "Only the rights in this network."}}},
    {.words = "message",
     .description = "Sends a message to all networks, or to one.",
     .arguments = {{"text", "The message."}},
     .options = {kOneNetwork, kForce},
     .joinsWords = true},
    {"set",
     "Changes a setting; takes effect at the next start.",
     {{"name", "The setting; \"settings\" lists them."},
      {"value", "The new value; may be empty.", true}},
     {{"force", nullptr, "Even if the server does not know the setting."}}},
    {"reload",
     "Reloads the networks from the database and shows what changed.",
     {},
     {kForce},
     {"change", "name", "users", "max-users", "enabled"}},
    {.words = "backup",
     .description = "Copies the database to a file, and the settings to FILE.xml beside it.",
     .arguments = {{"file", "The new file."}},
     .options = {{"overwrite", nullptr, "Replace existing files."}},
     .takesFile = true,
     .isSlow = true},
    {"log",
     "Shows the newest lines of the log.",
     {},
     {{"lines", "NUMBER", "How many, at most 10000. Default: 20."},
      {"follow", nullptr, "Keep showing new lines as they come."}}},
    {"events",
     "Shows what happens on the server, a line or a JSON object each.",
     {},
     {{"follow", nullptr, "Keep showing events as they happen; needed."},
      {"types", "TYPES",
       "Only these, with commas between: login, leave, refused, kick, ban, lifted, message, "
       "network, started, stopping."}}},
    {"quit", "Shuts the server down.", {}},
    {.words = "help",
     .description = "Shows all commands, or the help of one.",
     .arguments = {{"command", "The command.", false, true}},
     .joinsWords = true},
};

}  // namespace

std::span<const Command> AllCommands() {
  return kCommands;
}

std::vector<Option> OptionsOf(const Command& command) {
  std::vector<Option> options = command.options;
  if (command.password != Password::None) {
    options.push_back({"password-file", "FILE",
                       "Read the password from the first line of this file; - is standard input."});
  }
  if (command.password == Password::IfAsked) {
    options.push_back({"password", nullptr, "Ask for a password."});
  }
  return options;
}

std::span<const Option> CommonOptions() {
  return kCommonOptions;
}

}  // namespace corvane::ctl
