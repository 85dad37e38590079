#include "control/ctl/command_table.h"

namespace corvane::ctl {
namespace {

constexpr Argument kNetwork{"name", "The network."};
constexpr Argument kUser{"user", "The user's name, or ADDRESS:PORT as \"users\" shows it."};
constexpr Argument kReason{"reason", "What the user is told."};
constexpr Option kIsName{"name", nullptr, "USER is a name, even if it looks like ADDRESS:PORT."};
constexpr Option kOneNetwork{"network", "NAME", "Only this network."};
constexpr Option kForce{"force", nullptr, "Also where that ends the server."};
constexpr Option kMaxUsers{"max-users", "NUMBER", "Seats, 1 to 1000."};

constexpr Option kCommonOptions[] = {
    {"data-folder", "FOLDER",
     "Data folder of the server. If none is given: the user's own; where no server runs there, "
     "that of the machine's service."},
    {"json", nullptr, "Show the answers as they come, a JSON object a line."},
    {"help", nullptr, "Show this help.", "h"},
    {"version", nullptr, "Show the version.", "v"},
};

const std::vector<Command> kCommands = {
    {"status", "How the server fares.", {}},
    {"users", "Who is logged in.", {}, {kOneNetwork}, {"name", "network", "address"}},
    {"networks", "The networks.", {}, {}, {"name", "users", "max-users", "enabled"}},
    {"bans", "The bans.", {}, {}, {"id", "address", "by", "reason", "date", "network"}},
    {"admins", "The administrators.", {}, {}, {"id", "name", "network", "address"}},
    {"settings", "The settings.", {}, {}, {"name", "value"}},
    {.words = "network add",
     .description = "Adds a network. Its password is asked for, or read from standard input.",
     .arguments = {kNetwork},
     .options = {kMaxUsers, {"disabled", nullptr, "Let nobody in yet."}},
     .password = Password::Always},
    {.words = "network edit",
     .description = "Changes a network, for those who log in from now on.",
     .arguments = {kNetwork},
     .options = {kMaxUsers,
                 {"enable", nullptr, "Let users in."},
                 {"disable", nullptr, "Let nobody in any more."}},
     .password = Password::IfAsked,
     .needsOption = true},
    {"network delete",
     "Tells a network's users, sends them away and forgets it.",
     {kNetwork},
     {kForce}},
    {"network disconnect", "Sends a network's users away; they may come back.", {kNetwork}},
    {.words = "kick",
     .description = "Asks a user to leave.",
     .arguments = {kUser, kReason},
     .options = {kIsName},
     .joinsWords = true},
    {.words = "ban",
     .description = "Bans a user's address and asks the user to leave. Under classic rules the "
                    "connection stays until the user ends it.",
     .arguments = {kUser, kReason},
     .options = {kIsName},
     .joinsWords = true},
    {.words = "ban-address",
     .description = "Bans an address.",
     .arguments = {{"address", "The IPv4 address."}, {"reason", "Why."}},
     .options = {{"network", "NAME", "The network that it is noted for."}},
     .joinsWords = true},
    {"unban",
     "Lifts all bans of an address, or one.",
     {{"ban", "The address, or the ban's number as \"bans\" shows it."}}},
    {"disconnect", "Ends a connection at once.", {kUser}, {kIsName}},
    {"grant",
     "Makes a user an administrator.",
     {kUser},
     {kIsName,
      {"network", "NAME", "In this network, for one who is not logged in."},
      {"address", "ADDRESS", "From this address, for one who is not logged in."}}},
    {"revoke",
     "Takes an administrator's rights.",
     {{"admin", "The name, or the number as \"admins\" shows it."}},
     {kOneNetwork}},
    {.words = "message",
     .description = "Sends a message to all networks.",
     .arguments = {{"text", "The message."}},
     .options = {kOneNetwork, kForce},
     .joinsWords = true},
    {"set",
     "Changes a setting, for the next start.",
     {{"name", "The setting."}, {"value", "Its new value, which may be empty.", true}},
     {{"force", nullptr, "Also one of a name that the server does not know."}}},
    {"reload",
     "Reads the networks anew from the database, and shows what is different.",
     {},
     {kForce},
     {"change", "name", "users", "max-users", "enabled"}},
    {.words = "backup",
     .description = "Copies the database into a file, and the settings into FILE.xml beside it.",
     .arguments = {{"file", "The file to make."}},
     .options = {{"overwrite", nullptr, "Also in the place of files that are there."}},
     .takesFile = true,
     .isSlow = true},
    {"log",
     "The newest lines of the log.",
     {},
     {{"lines", "NUMBER", "How many, 10000 at most; 20 if none is given."},
      {"follow", nullptr, "And all that come from now on."}}},
    {"quit", "Ends the server.", {}},
    {.words = "help",
     .description = "Shows all commands, or what one of them takes.",
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
                       "Read the password, a line, from this file; - is standard input."});
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
