#pragma once

#include <QByteArray>

#include "control/request.h"

namespace corvane {

class Operator;

// The commands of the local socket that move a network from one server to another. Otherwise as
// Actions.
//
// Limits: a document has at most 1 MiB, as a request has, and so some 5,000 bans.
class NetworkTransfer {
 public:
  explicit NetworkTransfer(Operator& op) : myOperator(op) {}

  // A network with its password and administrators as "document"; with "bans" also its bans.
  QByteArray Export(const Request& request);
  // Adds the network of a document. Adds nothing if there is a network of that name, or if anything
  // in the document is wrong. Bans and administrators that the server has already stay single.
  QByteArray Import(const Request& request);

 private:
  Operator& myOperator;
};

}  // namespace corvane
