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

// The server's end of the local socket, through which local programs administer it. Admits only the
// user that the server runs as, and at most 16 clients at a time; the relay never waits for them.
// Holds the lock that keeps a second server from the data folder.
class ControlServer : public QObject {
 public:
  enum class Claim {
    Made,    // clients wait for Serve()
    Taken,   // another server has the folder
    Failed,  // the server works without the socket
  };
  // Takes the folder's lock and socket; replaces a socket left by a dead server.
  Claim Take(const QString& dataFolder);
  // Why Take() returned Failed.
  const std::string& Error() const { return myListener.Error(); }
  // Take(), if the folder exists, and reports failures to the operator. Returns false if another
  // server has the folder.
  bool TakeOrReport(const QString& dataFolder, const MessageBoxFunction& showMessage);

  // Serves clients from now on, if the socket was taken. Borrows the commands.
  void Serve(Commands& commands);

 private:
  void Accept(Commands& commands, QLocalSocket* socket);

  FolderLock myLock;
  LocalListener myListener;
  bool myIsListening = false;
  int myConnections = 0;
};

}  // namespace corvane
