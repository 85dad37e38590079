#pragma once

#include <optional>
#include <stdexcept>

#include <QJsonObject>
#include <QString>
#include <QStringList>

#include "control/ctl/command_table.h"

namespace corvane::ctl {

// A wrong command line; the text says what is wrong.
class UsageError : public std::runtime_error {
 public:
  explicit UsageError(const QString& text) : std::runtime_error(text.toStdString()) {}
};

// A parsed command line.
struct CommandLine {
  // Help, completions or version: print this and do nothing else.
  std::optional<QString> text;
  const Command* command = nullptr;
  QJsonObject request;
  std::optional<QString> dataFolder;
  std::optional<QString> passwordFile;  // "-": standard input
  bool asksPassword = false;
  bool json = false;
  bool all = false;  // the system service and its instances
};

// Throws UsageError.
CommandLine ParseCommandLine(const QStringList& arguments);

}  // namespace corvane::ctl
