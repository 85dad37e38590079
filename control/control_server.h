#pragma once

#include <functional>
#include <string>

#include <QObject>

#include "control/control_connection.h"
#include "control/folder_lock.h"
#include "control/local_listener.h"
#include "framework/message_box.h"

namespace corvane {

class Commands;

// The server's end of the local socket, by which this machine's programs administer it: nobody but
// the user whom the server runs as gets in, 16 at a time. Holds the lock of the data folder, which
// has one server. The relay never waits for its clients.
class ControlServer : public QObject {
 public:
  enum class Claim {
    Made,    // clients wait until they are served
    Taken,   // another server works there
    Failed,  // the server can do without
  };
  // Takes the folder's socket; replaces one that nobody answers on.
  Claim Take(const QString& dataFolder);
  // Why it could not be taken.
  const std::string& Error() const { return myListener.Error(); }
  // The same where there is a folder, and tells what goes wrong. Whether this is the one server of
  // the folder, as far as is known.
  bool TakeOrReport(const QString& dataFolder, const MessageBoxFunction& showMessage);

  // Has clients served, once the socket was taken. Borrows the commands.
  void Serve(Commands& commands);

 private:
  void Accept(Commands& commands, QLocalSocket* socket);

  FolderLock myLock;
  LocalListener myListener;
  bool myIsListening = false;
  int myConnections = 0;
};

}  // namespace corvane
