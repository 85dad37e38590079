#pragma once

#include <QByteArray>
#include <QDateTime>

#include "control/rates.h"
#include "control/request.h"

namespace corvane {

class App;
class MapSocket;
class Operator;

// What clients of the local socket may ask about the server, one method a command, which returns
// the answer. Borrows the application object, the listener, and what acts on them.
class Questions {
 public:
  Questions(App& app, MapSocket& listener, Operator& actions);

  QByteArray Status(const Request& request);
  QByteArray Users(const Request& request);
  QByteArray Networks(const Request& request);
  QByteArray Bans(const Request& request);
  QByteArray Admins(const Request& request);
  QByteArray Settings(const Request& request);

 private:
  App& myApp;
  MapSocket& myListener;
  Operator& myActions;
  Rates myRates;
  const QDateTime myStart = QDateTime::currentDateTimeUtc();
};

}  // namespace corvane
