// Plays whole sessions over real sockets. The first byte selects the rules, the rest is a script: a
// few clients connect, send and leave, and the operator acts. After every step the listener's
// indexes and seats must match a walk over the active connections; once all have left, nothing may
// be held.

#include <array>
#include <tuple>
#include <utility>

#include <QCoreApplication>

#include "framework/exceptions.h"
#include "fuzz/expect.h"
#include "net/os_socket.h"
#include "tests/support/test_server.h"

namespace {

using namespace corvane;

// Reads the input piece by piece; past the end all pieces are 0 or empty.
class Script {
 public:
  explicit Script(std::string_view bytes) : myRest(bytes) {}

  bool IsOver() const { return myRest.empty(); }
  std::uint8_t Byte() { return static_cast<std::uint8_t>(Take(1)[0]); }
  std::string Bytes() { return Take(Byte()); }

 private:
  std::string Take(std::size_t count) {
    std::string taken(myRest.substr(0, count));
    myRest.remove_prefix(taken.size());
    if (taken.empty()) taken.resize(1);
    return taken;
  }

  std::string_view myRest;
};

class Client {
 public:
  ~Client() { Close(); }

  void Connect(std::int32_t port) {
    if (myHandle != os::kNoSocket) return;
    myHandle = os::OpenSocket().handle;
    os::Connect(myHandle, {"127.0.0.1", static_cast<std::uint16_t>(port)});
  }
  void Send(std::string_view bytes) const {
    if (myHandle != os::kNoSocket) os::Send(myHandle, std::string_view(bytes.data(), bytes.size()));
  }
  void Read() const {
    std::array<char, 65'536> buffer;
    if (myHandle != os::kNoSocket) os::Receive(myHandle, buffer);
  }
  void Close() {
    if (myHandle != os::kNoSocket) os::CloseSocket(std::exchange(myHandle, os::kNoSocket));
  }

 private:
  os::SocketHandle myHandle = os::kNoSocket;
};

constexpr std::array<std::string_view, 4> kNames = {"Ann", "ANN", "Bob", ""};

std::string LoginStep(std::uint8_t choice) {
  static const std::string digest = PasswordDigest("secret");
  const std::string password = WireBytes(2, digest);
  const std::string name = WireBytes(3, kNames[choice / 16 % kNames.size()]);
  const std::string steps[] = {WireBytes(1, choice & 16 ? "B" : "a"), password, name,
                               WireBytes(1, "A") + password + name};
  return steps[choice % 4];
}

class Run {
 public:
  Run(TestServer& server, Script script) : myServer(server), myScript(script) {
    myServer.listener->Networks.clear();
    myServer.AddNetwork("A", "secret", 2);
    myServer.AddNetwork("B", "secret", 3);
  }

  // Plays the script up to its end, or to an error that would end the real program. Returns whether
  // the server is still usable.
  bool Play() {
    while (!myScript.IsOver() && myServer.uncaught.empty()) {
      Step();
      for (Client& client : myClients)
        client.Read();
      for (int i = 0; i < 3; ++i)
        QCoreApplication::processEvents();
      const std::string fault = myServer.Fault();
      Expect(fault.empty(), fault.c_str());
    }
    return myServer.uncaught.empty();
  }

  void Finish() {
    const auto networks = myServer.listener->Networks;
    for (Client& client : myClients)
      client.Close();
    Expect(PumpUntil([this] { return myServer.ActiveCount() == 0; }), "all connections end");
    for (const NetworkRef& network : networks)
      Expect(network->CurrentUsers == 0, "no seat without a session");
    Expect(myServer.loop.Memory().output.InUse() == 0, "no output is counted without a connection");
  }

 private:
  void Step() {
    const std::uint8_t choice = myScript.Byte();
    Client& client = myClients[choice % myClients.size()];
    switch (choice / myClients.size() % 8) {
      case 0:
        return client.Connect(myServer.Port());
      case 1:
      case 2:
        return client.Send(LoginStep(myScript.Byte()));
      case 3:
        return client.Send(WireBytes(4, myScript.Bytes()));
      case 4:
        return client.Send(WireBytes(myScript.Byte() % 16, myScript.Bytes()));
      case 5:
        return client.Send(myScript.Bytes());
      case 6:
        return client.Close();
      default:
        return Operate(myScript.Byte());
    }
  }

  void Operate(std::uint8_t choice) {
    MapSocket& listener = *myServer.listener;
    const std::size_t active = myServer.ActiveCount();
    try {
      switch (choice % 5) {
        case 0:
          if (active > 0) myServer.Active(choice % active)->Close();
          break;
        case 1:
          listener.KickUser("ann", "A", "reason");
          break;
        case 2:
          listener.BroadcastMessage("text", "(All Networks)");
          break;
        case 3:
          if (!listener.Networks.empty()) listener.RemoveNetwork(listener.Networks.back());
          break;
        default:
          for (const NetworkRef& network : listener.Networks)
            network->Enabled = choice & 16;
      }
    } catch (const NilObjectException&) {
      return;  // a message to a connection without a network ends the real program
    }
  }

  TestServer& myServer;
  Script myScript;
  std::array<Client, 4> myClients;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static int argc = 1;
  static char name[] = "fuzz_sessions";
  static char* argv[] = {name, nullptr};
  static const QCoreApplication application(argc, argv);
  if (size == 0) return 0;
  const bool isHardened = data[0] % 2 != 0;
  static std::array<std::unique_ptr<TestServer>, 2> servers;
  std::unique_ptr<TestServer>& server = servers[isHardened ? 1 : 0];
  if (server == nullptr) {
    server = std::make_unique<TestServer>(0, isHardened ? HardenedInAHurry() : Rules::Classic());
    std::ignore = server->database.SQLExecute("PRAGMA synchronous=OFF");
    std::ignore = AdminsTable(server->database).Add("Ann", "127.0.0.1", "A");
  }
  Run run(*server, Script({reinterpret_cast<const char*>(data) + 1, size - 1}));
  if (run.Play()) {
    run.Finish();
    std::ignore = server->database.SQLExecute("DELETE FROM bans");
    server->status.clear();
    server->events.clear();
  } else {
    server.reset();
  }
  return 0;
}
