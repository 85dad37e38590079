#pragma once

#include <stdexcept>

#include <QJsonObject>
#include <QString>

namespace corvane::ctl {

class Printer;

// Why a server could not be reached, for the operator.
class Unreached : public std::runtime_error {
 public:
  explicit Unreached(const QString& text) : std::runtime_error(text.toStdString()) {}
};

// Connects to a server as a client does, up to the greeting, and prints each step that works.
// Blocks for 20 s at most, and as long as the name lookup takes. Throws Unreached, and UsageError
// for a wrong address.
void CheckReach(const QJsonObject& request, Printer& printer);

}  // namespace corvane::ctl
