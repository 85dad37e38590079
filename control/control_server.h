#pragma once

#include <functional>
#include <string>

#include <QLocalServer>

#include "control/control_connection.h"

namespace corvane {

class Commands;

// The server's end of the local socket, by which this machine's programs administer it: nobody but
// the user whom the server runs as gets in, 16 at a time. Who has it is the one server of its data
// folder. The relay never waits for its clients.
class ControlServer : public QObject {
 public:
  enum class Claim {
    Made,    // clients wait until they are served
    Taken,   // another server answers there
    Failed,  // the server can do without
  };
  // Takes the folder's socket, in the place of one that nobody answers on.
  Claim Take(const QString& dataFolder);
  // Why it could not be taken.
  std::string Error() const;

  // Has clients served. Borrows the commands.
  void Serve(Commands& commands);

 private:
  void Accept(Commands& commands);

  QLocalServer myServer;
  int myConnections = 0;
};

}  // namespace corvane
