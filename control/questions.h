#pragma once

#include <QByteArray>
#include <QDateTime>

#include "control/rates.h"
#include "control/request.h"

namespace corvane {

class Operator;

// The commands of the local socket that only ask. Each method answers one command from the
// Operator, which it borrows, and gives way to the connections while it walks over users, bans or
// administrators. Throws Refused if there is no answer.
class Questions {
 public:
  explicit Questions(Operator& op);

  // With "check", whether the server works: refused with what does not.
  QByteArray Status(const Request& request);
  QByteArray Metrics(const Request& request);
  QByteArray Users(const Request& request);
  QByteArray Networks(const Request& request);
  QByteArray Bans(const Request& request);
  QByteArray Admins(const Request& request);
  QByteArray Settings(const Request& request);
  // The lines of a file of packaging/tunnel/ with this server's address, and the name in "domain".
  QByteArray Tunnel(const char* file, const Request& request);

 private:
  void Check();

  Operator& myOperator;
  Rates myRates;
  const QDateTime myStart = QDateTime::currentDateTimeUtc();
};

}  // namespace corvane
