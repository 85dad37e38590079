#pragma once

#include <functional>
#include <memory>
#include <string>

#include <QLocalSocket>

namespace corvane {

// Listens on a local socket that only the server's own user can connect to. Reserves a descriptor,
// so one more client is served when the process runs out of them; further clients wait.
class LocalListener {
 public:
  LocalListener();
  ~LocalListener();
  LocalListener(const LocalListener&) = delete;
  LocalListener& operator=(const LocalListener&) = delete;

  // Creates the socket under this name; replaces an existing one. Clients that connect wait until
  // Serve() is called. Returns whether it worked.
  bool Listen(const QString& name);
  // Why Listen() failed.
  const std::string& Error() const { return myError; }

  // Calls `accepted` for each client; the callee owns it.
  void Serve(std::function<void(QLocalSocket*)> accepted);

 private:
  struct Socket;
  std::unique_ptr<Socket> mySocket;
  std::string myError;
};

}  // namespace corvane
