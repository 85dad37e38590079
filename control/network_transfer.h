#pragma once

#include <functional>

#include <QByteArray>

#include "control/request.h"

namespace corvane {

class Operator;

// The commands of the local socket that move a network from one server to another. Otherwise as
// Actions.
//
// Limits: a document has at most 1,000,000 bytes, 1000 administrators and 20,000 bans.
class NetworkTransfer {
 public:
  explicit NetworkTransfer(Operator& op) : myOperator(op) {}

  // A network with its password and administrators as "document"; with "bans" also its bans. Import
  // stores each text as it was, byte for byte.
  QByteArray Export(const Request& request);
  // Has the network of a document stored in one transaction, returns nothing and calls `answer`
  // later. Skips administrators that the server has and bans that have ended or that it has for as
  // long. Refuses it if there is a network of that name, or if anything in the document is wrong.
  QByteArray Import(const Request& request, std::function<void(const QByteArray&)> answer);

 private:
  Operator& myOperator;
};

}  // namespace corvane
