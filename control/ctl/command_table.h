#pragma once

#include <span>
#include <vector>

namespace corvane::ctl {

// A positional argument of a command.
struct Argument {
  const char* name;  // the request's field
  const char* description;
  bool mayBeEmpty = false;
  bool isOptional = false;
};

struct Option {
  const char* name;       // the request's field
  const char* valueName;  // null: a switch; "NUMBER", "FILE" and "FOLDER" are checked or completed
  const char* description;
  const char* shortName = nullptr;
};

enum class Password { None, Always, IfAsked };

// One command of corvanectl: its arguments and options, and the columns that it shows of the
// answer. Help, completion and the manual page are made from these.
struct Command {
  const char* words;  // what the user types; the request's "command"
  const char* description;
  std::vector<Argument> arguments;  // if `joinsWords`, the last takes all further words
  std::vector<Option> options = {};
  std::vector<const char*> columns = {};  // of the answer's rows, in order
  bool joinsWords = false;
  Password password = Password::None;
  bool needsOption = false;   // does nothing without an option
  bool takesFile = false;     // the first argument is a file; sent as an absolute path
  bool isSlow = false;        // the answer may take minutes
  bool asksNoServer = false;  // corvanectl itself carries it out
};

std::span<const Command> AllCommands();

// The command's own options, including those for its password.
std::vector<Option> OptionsOf(const Command& command);

// The options of every command.
std::span<const Option> CommonOptions();

}  // namespace corvane::ctl
