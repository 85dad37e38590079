#pragma once

#include <netinet/in.h>

#include <QTcpServer>
#include <QTcpSocket>
#include <QThread>

#include "client/tls.h"

namespace corvane::swarm {

// Carries the connections of this process to a server through TLS, each in a separate one and, if
// the server is on this machine, from the same source address. Works on a thread. Prints why a
// connection could not be made and ends it.
class TlsTunnel {
 public:
  // Throws std::runtime_error if it cannot listen.
  TlsTunnel(const sockaddr_in& server, client::Tls tls);
  ~TlsTunnel();
  TlsTunnel(const TlsTunnel&) = delete;
  TlsTunnel& operator=(const TlsTunnel&) = delete;

  // The near end, on the loopback interface.
  sockaddr_in Address() const;

 private:
  void Carry(QTcpSocket& near);

  QHostAddress myServer;
  std::uint16_t myPort;
  client::Tls myTls;
  QTcpServer myListener;
  QThread myThread;
};

}  // namespace corvane::swarm
