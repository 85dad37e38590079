#include <utility>

#include <QLocalServer>

#include "control/local_listener.h"
#include "framework/text.h"

namespace corvane {

// Pipes do not use a limited table of descriptors, so none is reserved.
struct LocalListener::Socket {
  QLocalServer server;
};

LocalListener::LocalListener() = default;
LocalListener::~LocalListener() = default;

bool LocalListener::Listen(const QString& name) {
  mySocket = std::make_unique<Socket>();
  mySocket->server.setSocketOptions(QLocalServer::UserAccessOption);
  if (mySocket->server.listen(name)) return true;
  myError = TextFromDisplay(mySocket->server.errorString());
  return false;
}

void LocalListener::Serve(std::function<void(QLocalSocket*)> accepted) {
  const auto acceptAll = [&server = mySocket->server, accepted = std::move(accepted)] {
    while (QLocalSocket* const client = server.nextPendingConnection())
      accepted(client);
  };
  QObject::connect(&mySocket->server, &QLocalServer::newConnection, acceptAll);
  acceptAll();
}

}  // namespace corvane
