#pragma once

#include <span>
#include <vector>

namespace corvane::ctl {

struct Argument {
  const char* name;  // the request's field
  const char* description;
};

struct OptionOf {
  const char* name;       // the request's field
  const char* valueName;  // none: a switch; "NUMBER": a number
  const char* description;
};

enum class Password { None, Always, IfAsked };

// One command of corvanectl: what it takes, and what it shows of the answer.
struct Command {
  const char* words;  // the request's "command"
  const char* description;
  std::vector<Argument> arguments;  // the last takes all further words where `joinsWords`
  std::vector<OptionOf> options = {};
  std::vector<const char*> columns = {};  // of the answer's rows
  bool joinsWords = false;
  Password password = Password::None;
  bool takesFile = false;     // the first argument: the server is told its whole path
  bool takesItsTime = false;  // the answer may be long in coming
};

std::span<const Command> AllCommands();

}  // namespace corvane::ctl
