#pragma once

#include <functional>
#include <memory>
#include <string>

#include <QLocalSocket>

namespace corvane {

// Listens on a local socket that only the server's own user can connect to. Reserves one
// descriptor, so that when the process runs out of them one more client is served; the others wait.
class LocalListener {
 public:
  LocalListener();
  ~LocalListener();
  LocalListener(const LocalListener&) = delete;
  LocalListener& operator=(const LocalListener&) = delete;

  // Takes the name and replaces an existing socket. Clients wait for Serve().
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
