#pragma once

#include <QByteArray>
#include <QDateTime>

#include "control/rates.h"
#include "control/request.h"

namespace corvane {

class Operator;

// What clients of the local socket may ask about the server, one method a command, which returns
// the answer. Borrows what knows the server.
class Questions {
 public:
  explicit Questions(Operator& op);

  QByteArray Status(const Request& request);
  QByteArray Users(const Request& request);
  QByteArray Networks(const Request& request);
  QByteArray Bans(const Request& request);
  QByteArray Admins(const Request& request);
  QByteArray Settings(const Request& request);

 private:
  Operator& myOperator;
  Rates myRates;
  const QDateTime myStart = QDateTime::currentDateTimeUtc();
};

}  // namespace corvane
