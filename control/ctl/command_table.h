#pragma once

#include <span>
#include <vector>

namespace corvane::ctl {

struct Argument {
  const char* name;  // the request's field
  const char* description;
  bool mayBeEmpty = false;
  bool isOptional = false;
};

struct Option {
  const char* name;       // the request's field
  const char* valueName;  // none: a switch; "NUMBER", "FILE", "FOLDER": one of these
  const char* description;
  const char* shortName = nullptr;
};

enum class Password { None, Always, IfAsked };

// One command of corvanectl: what it takes, and what it shows of the answer. Help, completion and
// the manual page are made from these.
struct Command {
  const char* words;  // the request's "command"
  const char* description;
  std::vector<Argument> arguments;  // the last takes all further words where `joinsWords`
  std::vector<Option> options = {};
  std::vector<const char*> columns = {};  // of the answer's rows
  bool joinsWords = false;
  Password password = Password::None;
  bool needsOption = false;  // does nothing without one
  bool takesFile = false;    // the first argument: the server is told its whole path
  bool isSlow = false;       // the answer may be long in coming
};

std::span<const Command> AllCommands();

// The command's own options, with those for its password.
std::vector<Option> OptionsOf(const Command& command);

// Those that every command takes.
std::span<const Option> CommonOptions();

}  // namespace corvane::ctl
