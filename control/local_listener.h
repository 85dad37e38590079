#pragma once

#include <functional>
#include <memory>
#include <string>

#include <QLocalSocket>

namespace corvane {

// Listens on a local socket where nobody but the server's own user gets in. One descriptor is kept
// back, so that one more client is served when the process has no other left; the rest wait until
// there are some again.
class LocalListener {
 public:
  LocalListener();
  ~LocalListener();
  LocalListener(const LocalListener&) = delete;
  LocalListener& operator=(const LocalListener&) = delete;

  // Takes the name; replaces a socket that lies there. Clients wait until they are served.
  bool Listen(const QString& name);
  // Why that failed.
  const std::string& Error() const { return myError; }

  // Calls `accepted` for each client, which it owns.
  void Serve(std::function<void(QLocalSocket*)> accepted);

 private:
  struct Socket;
  std::unique_ptr<Socket> mySocket;
  std::string myError;
};

}  // namespace corvane
