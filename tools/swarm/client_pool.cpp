#include "tools/swarm/client_pool.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <netinet/tcp.h>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/signalfd.h>
#include <sys/socket.h>
#include <sys/timerfd.h>
#include <system_error>
#include <unistd.h>

namespace corvane::swarm {

namespace {

constexpr std::size_t kReadBytes = std::size_t{256} << 10;
constexpr std::size_t kDiscardBytes = std::size_t{4} << 20;
// For a login after the greeting, and for the answer to a leave.
constexpr std::chrono::seconds kPatience{30};
constexpr int kNetworkSegment = 1460;

std::string ErrorText(int code) {
  return std::generic_category().message(code);
}

int Checked(int result, const char* what) {
  if (result < 0) throw std::system_error(errno, std::generic_category(), what);
  return result;
}

int OpenSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  for (const int number : {SIGINT, SIGTERM}) {
    sigaddset(&signals, number);
    // A shell starts background programs with SIGINT ignored; an ignored signal never arrives.
    std::signal(number, SIG_DFL);
  }
  sigprocmask(SIG_BLOCK, &signals, nullptr);
  return Checked(signalfd(-1, &signals, SFD_NONBLOCK | SFD_CLOEXEC), "signalfd");
}

template <typename Value>
void Set(int descriptor, int level, int option, const Value& value) {
  setsockopt(descriptor, level, option, &value, sizeof value);
}

}  // namespace

ClientPool::ClientPool(const Manner& manner)
    : myManner(manner), mySources(manner.server, manner.sources), myBuffer(kReadBytes) {
  myEpoll = Checked(epoll_create1(EPOLL_CLOEXEC), "epoll_create1");
  myInterrupts = manner.takesSignals ? OpenSignals()
                                     : Checked(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC), "eventfd");
  myTimer = Checked(timerfd_create(CLOCK_MONOTONIC, TFD_NONBLOCK | TFD_CLOEXEC), "timerfd_create");
  for (int* const descriptor : {&myTimer, &myInterrupts}) {
    epoll_event event{};
    event.events = EPOLLIN;
    event.data.ptr = descriptor;
    Checked(epoll_ctl(myEpoll, EPOLL_CTL_ADD, *descriptor, &event), "epoll_ctl");
  }
}

ClientPool::~ClientPool() {
  for (const int descriptor : {myEpoll, myTimer, myInterrupts})
    close(descriptor);
}

void ClientPool::Run(ClientEvents& events) {
  myEvents = &events;
  while (!myIsStopped) {
    WriteDirty();
    StartConnecting();
    Wait();
    RunTimers();
  }
}

void ClientPool::Interrupt() const {
  eventfd_write(myInterrupts, 1);
}

void ClientPool::Wait() {
  ArmTimer();
  std::array<epoll_event, 512> ready;
  const bool isBusy = !myDirty.empty() || myIsStopped;
  const int count =
      epoll_wait(myEpoll, ready.data(), static_cast<int>(ready.size()), isBusy ? 0 : -1);
  if (count < 0 && errno != EINTR) Checked(count, "epoll_wait");
  for (int i = 0; i < count; ++i) {
    const epoll_event& event = ready[static_cast<std::size_t>(i)];
    if (event.data.ptr == &myInterrupts) {
      signalfd_siginfo interrupt;  // large enough for an eventfd, too
      while (read(myInterrupts, &interrupt, sizeof interrupt) > 0)
        myEvents->Interrupted();
    } else if (event.data.ptr != &myTimer) {
      Handle(*static_cast<Client*>(event.data.ptr), event.events);
    }
  }
}

// A timerfd is accurate to some microseconds; the timeout of epoll_wait may be late by half a per
// cent.
void ClientPool::ArmTimer() {
  Clock::time_point next = myWake.value_or(Clock::time_point::max());
  if (!myDeadlines.empty()) next = std::min(next, myDeadlines.begin()->first);
  if (next == myArmed) return;
  myArmed = next;
  itimerspec spec{};
  // 0 would disarm the timer.
  const auto since = std::max(next.time_since_epoch(), Clock::duration(1));
  const auto seconds = std::chrono::floor<std::chrono::seconds>(since);
  spec.it_value.tv_sec = seconds.count();
  spec.it_value.tv_nsec = (since - seconds).count();
  // This also clears an expiration that was not read.
  timerfd_settime(myTimer, TFD_TIMER_ABSTIME, &spec, nullptr);
}

void ClientPool::Connect(Client& client) {
  client.myState = Client::State::Queued;
  if (client.myRest) {
    SetDeadline(client, std::exchange(client.myRest, std::nullopt));
  } else {
    myQueue.push_back(&client);
  }
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
  client::AppendFrame(client.myOutput, client::command::kBye, "");
  MarkDirty(client);
  client.myState = Client::State::Leaving;
  SetDeadline(client, Clock::now() + kPatience);
}

void ClientPool::Reset(Client& client) {
  if (client.myDescriptor >= 0) Set(client.myDescriptor, SOL_SOCKET, SO_LINGER, linger{1, 0});
  CloseDescriptor(client);
}

// Only between rounds: an event of a closed descriptor is never taken for one of the client's new
// connection.
void ClientPool::StartConnecting() {
  while (!myQueue.empty() && myUngreeted < myManner.connectAtOnce) {
    Client* const client = myQueue.front();
    myQueue.pop_front();
    StartConnecting(*client);
  }
}

void ClientPool::StartConnecting(Client& client) {
  client.myState = Client::State::Connecting;
  ++myUngreeted;
  client.myCutter.Reset();
  if (client.myLogin) client.myLogin->Restart();
  client.myTurn = 0;
  SetDeadline(client, Clock::now() + myManner.patience);
  if (!client.mySource) client.mySource = mySourcesGiven++;

  client.myDescriptor = socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
  if (client.myDescriptor < 0) {
    Lose(client, "no socket: " + ErrorText(errno));
    return;
  }
  Set(client.myDescriptor, IPPROTO_TCP, TCP_NODELAY, 1);
  if (myManner.reading == Reading::Nothing) {
    // Makes unread output wait in the server: the smallest buffer, and segments as on a network. In
    // the long segments of a local connection the kernel would keep megabytes of it.
    Set(client.myDescriptor, SOL_SOCKET, SO_RCVBUF, 1);
    Set(client.myDescriptor, IPPROTO_TCP, TCP_MAXSEG, kNetworkSegment);
  }
  if (!mySources.Connect(client.myDescriptor, *client.mySource)) {
    Lose(client, "cannot connect: " + ErrorText(errno));
    return;
  }
  Watch(client, EPOLL_CTL_ADD);
}

void ClientPool::Handle(Client& client, std::uint32_t ready) {
  // Closed earlier in the same round.
  if (client.myDescriptor < 0) return;
  if (client.myState == Client::State::Connecting) {
    FinishConnecting(client);
    return;
  }
  if ((ready & EPOLLOUT) != 0) MarkDirty(client);
  if ((ready & ~std::uint32_t{EPOLLOUT}) != 0) Read(client);
}

void ClientPool::FinishConnecting(Client& client) {
  int error = 0;
  socklen_t size = sizeof error;
  getsockopt(client.myDescriptor, SOL_SOCKET, SO_ERROR, &error, &size);
  if (error != 0) {
    Lose(client, "cannot connect: " + ErrorText(error));
    return;
  }
  client.myState = Client::State::Greeting;
  Watch(client);
}

void ClientPool::Read(Client& client) {
  const Reading reading = client.myState == Client::State::Online ? myManner.reading : Reading::All;
  // With MSG_TRUNC the kernel drops a stream's bytes without copying them. A client that reads
  // nothing gets here at the end of its connection only.
  const ssize_t count = reading == Reading::Nothing ? 0
                        : reading == Reading::Discarding
                            ? recv(client.myDescriptor, nullptr, kDiscardBytes, MSG_TRUNC)
                            : recv(client.myDescriptor, myBuffer.data(), kReadBytes, 0);
  if (count < 0 && (errno == EAGAIN || errno == EINTR)) return;
  if (count <= 0) {
    Lose(client, count == 0 ? "closed by the server" : ErrorText(errno));
    return;
  }
  if (reading == Reading::Discarding) return;
  const std::string_view bytes(myBuffer.data(), static_cast<std::size_t>(count));
  const bool inStep = client.myCutter.Feed(
      bytes, [&](std::int32_t command, std::string_view data) { Receive(client, command, data); });
  // A handler may have closed the client already.
  if (!inStep && client.myDescriptor >= 0) Lose(client, "the server sent a malformed message");
}

void ClientPool::Receive(Client& client, std::int32_t command, std::string_view payload) {
  switch (client.myState) {
    case Client::State::Greeting:
      if (command == client::command::kNetworkName) {
        --myUngreeted;
        client.myState = Client::State::LoggingIn;
        SetDeadline(client, Clock::now() + kPatience);
        myEvents->Greeted(client);
      }
      [[fallthrough]];
    case Client::State::LoggingIn:
      Login(client, command, payload);
      break;
    case Client::State::Online:
      myEvents->Received(client, command, payload);
      break;
    case Client::State::Leaving:
      if (command == client::command::kBye) {
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

void ClientPool::Login(Client& client, std::int32_t command, std::string_view payload) {
  using Step = client::Login::State;
  Step step = client.myState == Client::State::LoggingIn ? Step::LoggedIn : Step::Refused;
  if (client.myLogin) step = client.myLogin->Receive(command, payload, client.myOutput);
  if (step == Step::Refused) {
    Lose(client, client.myLogin
                     ? "login refused: " + client.myLogin->Refusal().Explanation().toStdString()
                     : "not greeted");
    return;
  }
  if (step == Step::LoggedIn) {
    client.myState = Client::State::Online;
    SetDeadline(client, std::nullopt);
    myEvents->LoggedIn(client);
  }
  if (client.myDescriptor >= 0) MarkDirty(client);
}

void ClientPool::MarkDirty(Client& client) {
  if (client.myIsDirty) return;
  client.myIsDirty = true;
  myDirty.push_back(&client);
}

void ClientPool::WriteDirty() {
  // A failed write raises an event, whose handler may add to myDirty.
  myWriting.swap(myDirty);
  for (Client* const client : myWriting) {
    client->myIsDirty = false;
    if (client->myDescriptor >= 0) Write(*client);
  }
  myWriting.clear();
}

void ClientPool::Write(Client& client) {
  if (client.IsIdle()) {
    myEvents->Idle(client);
    if (std::exchange(client.myIsHangingUp, false)) {
      Reset(client);
      Connect(client);
    }
    if (client.myDescriptor < 0) return;
    ++client.myTurn;
    if (client.myRest) SetDeadline(client, std::exchange(client.myRest, std::nullopt));
  }
  if (client.HasOutput()) {
    const std::string_view piece = client.Piece();
    const ssize_t count = send(client.myDescriptor, piece.data(), piece.size(), MSG_NOSIGNAL);
    if (count < 0 && errno != EAGAIN && errno != EINTR) {
      Lose(client, ErrorText(errno));
      return;
    }
    if (count > 0) client.Consume(static_cast<std::size_t>(count));
  }
  Watch(client);
}

// Registers the events to wait for, if they have changed or an operation is given.
void ClientPool::Watch(Client& client, int operation) const {
  epoll_event event{};
  const bool isIgnored =
      client.myState == Client::State::Online && myManner.reading == Reading::Nothing;
  event.events = isIgnored ? EPOLLRDHUP : EPOLLIN;
  if (client.HasOutput() || client.IsIdle()) event.events |= EPOLLOUT;
  if (client.myState == Client::State::Connecting) event.events = EPOLLOUT;
  if (operation == 0 && event.events == client.myInterest) return;
  client.myInterest = event.events;
  event.data.ptr = &client;
  Checked(
      epoll_ctl(myEpoll, operation == 0 ? EPOLL_CTL_MOD : operation, client.myDescriptor, &event),
      "epoll_ctl");
}

void ClientPool::CloseDescriptor(Client& client) {
  if (client.myDescriptor >= 0) close(client.myDescriptor);
  client.myDescriptor = -1;
  client.ClearOutput();
  client.myFillerBytes = 0;
  client.myRest.reset();
  SetDeadline(client, std::nullopt);
  if (client.myState == Client::State::Queued) std::erase(myQueue, &client);
  if (client.myState == Client::State::Connecting || client.myState == Client::State::Greeting)
    --myUngreeted;
  client.myState = Client::State::Offline;
}

void ClientPool::Lose(Client& client, const std::string& reason) {
  const Client::State before = client.myState;
  CloseDescriptor(client);
  myEvents->Lost(client, before, reason);
}

void ClientPool::SetDeadline(Client& client, std::optional<Clock::time_point> time) {
  if (client.myDeadline) myDeadlines.erase({*client.myDeadline, &client});
  client.myDeadline = time;
  if (time) myDeadlines.emplace(*time, &client);
}

void ClientPool::RunTimers() {
  const Clock::time_point now = Clock::now();
  while (!myDeadlines.empty() && myDeadlines.begin()->first <= now)
    PassDeadline(*myDeadlines.begin()->second);
  if (myWake && now >= *myWake) {
    myWake.reset();
    myEvents->Wake(now);
  }
}

void ClientPool::PassDeadline(Client& client) {
  SetDeadline(client, std::nullopt);
  if (client.myState == Client::State::Queued) {
    myQueue.push_back(&client);
  } else if (client.myState == Client::State::Online) {
    MarkDirty(client);
  } else {
    Lose(client, client.myState == Client::State::Leaving    ? "the leave was not answered"
                 : client.myState == Client::State::Greeting ? "no greeting; it may expect TLS"
                                                             : "the login took too long");
  }
}

}  // namespace corvane::swarm
