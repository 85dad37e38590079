#include "tools/swarm/client_pool.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <netinet/tcp.h>
#include <sys/signalfd.h>
#include <sys/socket.h>
#include <sys/timerfd.h>
#include <system_error>
#include <unistd.h>
#include <utility>

#include "tools/swarm/checked.h"

namespace corvane::swarm {

namespace {

constexpr std::size_t kReadBytes = std::size_t{256} << 10;
// A login that takes longer than this, or a leave that is not answered, has failed.
constexpr std::chrono::seconds kPatience{30};
constexpr std::chrono::seconds kLookInterval{1};

std::string ErrorText(int code) {
  return std::generic_category().message(code);
}

int OpenSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  for (const int number : {SIGINT, SIGTERM}) {
    sigaddset(&signals, number);
    // A shell starts background programs with SIGINT ignored, and an ignored signal never arrives.
    std::signal(number, SIG_DFL);
  }
  sigprocmask(SIG_BLOCK, &signals, nullptr);
  return Checked(signalfd(-1, &signals, SFD_NONBLOCK | SFD_CLOEXEC), "signalfd");
}

}  // namespace

ClientPool::ClientPool(const sockaddr_in& server, const LoopbackRange& sources,
                       std::size_t connectAtOnce)
    : myServer(server), mySources(sources), myConnectAtOnce(connectAtOnce), myBuffer(kReadBytes) {
  myEpoll = Checked(epoll_create1(EPOLL_CLOEXEC), "epoll_create1");
  myTimer = Checked(timerfd_create(CLOCK_MONOTONIC, TFD_NONBLOCK | TFD_CLOEXEC), "timerfd_create");
  mySignals = OpenSignals();
  for (int* const descriptor : {&myTimer, &mySignals}) {
    epoll_event event{};
    event.events = EPOLLIN;
    event.data.ptr = descriptor;
    Checked(epoll_ctl(myEpoll, EPOLL_CTL_ADD, *descriptor, &event), "epoll_ctl");
  }
}

ClientPool::~ClientPool() {
  for (const int descriptor : {myEpoll, myTimer, mySignals})
    close(descriptor);
}

void ClientPool::Run(ClientEvents& events) {
  myEvents = &events;
  myNextLook = Clock::now() + kLookInterval;
  ArmTimer();
  std::array<epoll_event, 512> ready;
  while (!myIsStopped) {
    StartConnecting();
    WriteDirty();
    const int count =
        epoll_wait(myEpoll, ready.data(), static_cast<int>(ready.size()), myDirty.empty() ? -1 : 0);
    if (count < 0 && errno != EINTR) Checked(count, "epoll_wait");
    for (int i = 0; i < count; ++i) {
      const epoll_event& event = ready[static_cast<std::size_t>(i)];
      if (event.data.ptr == &myTimer) {
        HandleTimer();
      } else if (event.data.ptr == &mySignals) {
        HandleSignal();
      } else {
        Handle(*static_cast<Client*>(event.data.ptr), event.events);
      }
    }
  }
}

void ClientPool::Connect(Client& client) {
  client.myState = Client::State::Queued;
  myQueue.push_back(&client);
}

void ClientPool::Send(Client& client, const client::Report& report) {
  if (client.myState != Client::State::Online) return;
  client::AppendReport(client.myOutput, report);
  MarkDirty(client);
}

void ClientPool::Leave(Client& client) {
  if (client.myState == Client::State::Leaving) return;
  if (client.myState != Client::State::Online) {
    CloseDescriptor(client);
    return;
  }
  client::AppendFrame(client.myOutput, client::command::kLeave, "");
  MarkDirty(client);
  client.myState = Client::State::Leaving;
  client.myPatience = Clock::now() + kPatience;
  myLeaving.push_back(&client);
}

void ClientPool::Reset(Client& client) {
  if (client.myDescriptor >= 0) {
    const linger discard{1, 0};
    setsockopt(client.myDescriptor, SOL_SOCKET, SO_LINGER, &discard, sizeof discard);
  }
  CloseDescriptor(client);
}

void ClientPool::WakeAt(Clock::time_point time) {
  myWake = time;
  ArmTimer();
}

// Only between rounds, so that a readiness that was reported for a closed descriptor is never
// taken for that of a new connection of the same client.
void ClientPool::StartConnecting() {
  while (!myQueue.empty() && myUngreeted < myConnectAtOnce) {
    Client* const client = myQueue.front();
    myQueue.pop_front();
    StartConnecting(*client);
  }
}

void ClientPool::StartConnecting(Client& client) {
  client.myState = Client::State::Connecting;
  client.myPatience = Clock::now() + kPatience;
  client.myIsGreeted = false;
  ++myUngreeted;
  client.myCutter.Reset();
  client.myLogin.Restart();
  myArriving.push_back(&client);

  client.myDescriptor = socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
  if (client.myDescriptor < 0) {
    Lose(client, "no socket: " + ErrorText(errno));
    return;
  }
  const int yes = 1;
  setsockopt(client.myDescriptor, IPPROTO_TCP, TCP_NODELAY, &yes, sizeof yes);
  const auto* const address = reinterpret_cast<const sockaddr*>(&myServer);
  const bool isConnecting =
      mySources.Bind(client.myDescriptor, myConnections++) &&
      (connect(client.myDescriptor, address, sizeof myServer) == 0 || errno == EINPROGRESS);
  if (!isConnecting) {
    Lose(client, "cannot connect: " + ErrorText(errno));
    return;
  }
  Watch(client, EPOLL_CTL_ADD, EPOLLIN | EPOLLOUT);
}

void ClientPool::Handle(Client& client, std::uint32_t ready) {
  // Closed earlier in the same round.
  if (client.myDescriptor < 0) return;
  if (client.myState == Client::State::Connecting) {
    FinishConnecting(client);
    return;
  }
  if ((ready & EPOLLOUT) != 0) MarkDirty(client);
  if ((ready & (EPOLLIN | EPOLLERR | EPOLLHUP)) != 0) Read(client);
}

void ClientPool::FinishConnecting(Client& client) {
  int error = 0;
  socklen_t size = sizeof error;
  getsockopt(client.myDescriptor, SOL_SOCKET, SO_ERROR, &error, &size);
  if (error != 0) {
    Lose(client, "cannot connect: " + ErrorText(error));
    return;
  }
  client.myState = Client::State::LoggingIn;
  Watch(client, EPOLL_CTL_MOD, EPOLLIN);
}

void ClientPool::Read(Client& client) {
  const ssize_t count = recv(client.myDescriptor, myBuffer.data(), myBuffer.size(), 0);
  if (count < 0 && (errno == EAGAIN || errno == EINTR)) return;
  if (count <= 0) {
    Lose(client, count == 0 ? "closed by the server" : ErrorText(errno));
    return;
  }
  const std::string_view bytes(myBuffer.data(), static_cast<std::size_t>(count));
  const bool inStep = client.myCutter.Feed(
      bytes, [&](std::int32_t command, std::string_view data) { Receive(client, command, data); });
  // A handler may have closed the client before the stream went wrong.
  if (!inStep && client.myDescriptor >= 0) Lose(client, "the server sent a malformed message");
}

void ClientPool::Greet(Client& client) {
  if (!std::exchange(client.myIsGreeted, true)) --myUngreeted;
}

void ClientPool::Receive(Client& client, std::int32_t command, std::string_view payload) {
  switch (client.myState) {
    case Client::State::LoggingIn:
      Greet(client);
      switch (client.myLogin.Receive(command, payload, client.myOutput)) {
        case client::Login::State::Waiting:
          if (!client.myOutput.empty()) MarkDirty(client);
          break;
        case client::Login::State::Refused:
          Lose(client, "login refused: " + client.myLogin.Refusal().Explanation().toStdString());
          break;
        case client::Login::State::LoggedIn:
          std::erase(myArriving, &client);
          client.myState = Client::State::Online;
          myEvents->LoggedIn(client);
          break;
      }
      break;
    case Client::State::Online:
      myEvents->Received(client, command, payload);
      break;
    case Client::State::Leaving:
      if (command == client::command::kLeave) {
        CloseDescriptor(client);
        myEvents->Left(client);
      }
      break;
    case Client::State::Offline:
    case Client::State::Queued:
    case Client::State::Connecting:
      break;
  }
}

void ClientPool::LoseImpatient(Clock::time_point now) {
  std::vector<Client*> late;
  for (const auto* list : {&myArriving, &myLeaving}) {
    std::copy_if(list->begin(), list->end(), std::back_inserter(late),
                 [&](const Client* client) { return client->myPatience <= now; });
  }
  for (Client* const client : late) {
    Lose(*client, client->myState == Client::State::Leaving ? "the leave was not answered"
                                                            : "the login took too long");
  }
}

void ClientPool::MarkDirty(Client& client) {
  if (client.myIsDirty) return;
  client.myIsDirty = true;
  myDirty.push_back(&client);
}

void ClientPool::WriteDirty() {
  // A write that fails raises an event, and that may make others dirty.
  myWriting.swap(myDirty);
  for (Client* const client : myWriting) {
    client->myIsDirty = false;
    if (client->myDescriptor >= 0) Write(*client);
  }
  myWriting.clear();
}

void ClientPool::Write(Client& client) {
  if (client.myOutput.empty()) return;
  const ssize_t count =
      send(client.myDescriptor, client.myOutput.data(), client.myOutput.size(), MSG_NOSIGNAL);
  if (count < 0 && errno != EAGAIN && errno != EINTR) {
    Lose(client, ErrorText(errno));
    return;
  }
  if (count > 0) client.myOutput.erase(0, static_cast<std::size_t>(count));
  const bool waits = !client.myOutput.empty();
  if (waits != client.myWaitsForRoom) {
    client.myWaitsForRoom = waits;
    Watch(client, EPOLL_CTL_MOD, waits ? EPOLLIN | EPOLLOUT : EPOLLIN);
  }
}

void ClientPool::Watch(Client& client, int operation, std::uint32_t events) const {
  epoll_event event{};
  event.events = events;
  event.data.ptr = &client;
  Checked(epoll_ctl(myEpoll, operation, client.myDescriptor, &event), "epoll_ctl");
}

void ClientPool::CloseDescriptor(Client& client) {
  if (client.myDescriptor >= 0) close(client.myDescriptor);
  client.myDescriptor = -1;
  client.myOutput.clear();
  client.myWaitsForRoom = false;
  if (client.myState == Client::State::Queued) std::erase(myQueue, &client);
  if (client.myState == Client::State::Connecting || client.myState == Client::State::LoggingIn) {
    std::erase(myArriving, &client);
    Greet(client);
  }
  if (client.myState == Client::State::Leaving) std::erase(myLeaving, &client);
  client.myState = Client::State::Offline;
}

void ClientPool::Lose(Client& client, const std::string& reason) {
  const Client::State before = client.myState;
  CloseDescriptor(client);
  myEvents->Lost(client, before, reason);
}

void ClientPool::HandleSignal() {
  signalfd_siginfo info;
  while (read(mySignals, &info, sizeof info) > 0)
    myEvents->Interrupted();
}

void ClientPool::HandleTimer() {
  std::uint64_t expirations = 0;
  if (read(myTimer, &expirations, sizeof expirations) < 0) return;
  const Clock::time_point now = Clock::now();
  if (now >= myNextLook) {
    myNextLook = now + kLookInterval;
    LoseImpatient(now);
  }
  if (myWake && now >= *myWake) {
    myWake.reset();
    myEvents->Wake(now);
  }
  ArmTimer();
}

void ClientPool::ArmTimer() const {
  const Clock::time_point next = myWake ? std::min(*myWake, myNextLook) : myNextLook;
  const auto since = std::max(next.time_since_epoch(), Clock::duration(1));
  const auto seconds = std::chrono::floor<std::chrono::seconds>(since);
  itimerspec spec{};
  spec.it_value.tv_sec = seconds.count();
  spec.it_value.tv_nsec = (since - seconds).count();
  timerfd_settime(myTimer, TFD_TIMER_ABSTIME, &spec, nullptr);
}

}  // namespace corvane::swarm
