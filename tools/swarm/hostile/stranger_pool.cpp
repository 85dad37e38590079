#include "tools/swarm/hostile/stranger_pool.h"

#include <array>
#include <cerrno>
#include <netinet/tcp.h>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <unistd.h>

#include "tools/swarm/checked.h"

namespace corvane::swarm {

namespace {

constexpr std::size_t kReadAtOnce = std::size_t{64} << 10;
constexpr std::size_t kDiscardBytes = std::size_t{4} << 20;
// How soon it is noticed that the pool has to stop.
constexpr std::chrono::milliseconds kStopLookInterval{20};
// Where this process is out of descriptors.
constexpr std::chrono::seconds kRetryInterval{1};
constexpr in_addr_t kLoopbackSources = 64;
constexpr int kNetworkSegment = 1460;

}  // namespace

StrangerPool::StrangerPool(const sockaddr_in& server, HostilePart& part, const Access& access)
    : myServer(server),
      mySources(access.sources),
      myPart(part),
      myEpoll(Checked(epoll_create1(EPOLL_CLOEXEC), "epoll_create1")),
      myBuffer(kReadAtOnce) {
  for (std::size_t index = 0; index < part.Custom().strangers; ++index) {
    std::optional<client::Login> login;
    if (part.Custom().standing != Standing::Outside) {
      login.emplace(client::Account{access.network, access.passwordDigest, part.UserName(index)});
    }
    myStrangers.push_back(std::make_unique<Stranger>(index, std::move(login)));
    myQueue.push_back(myStrangers.back().get());
  }
}

StrangerPool::~StrangerPool() {
  close(myEpoll);
}

void StrangerPool::Run(const std::stop_token& stop, Clock::time_point until) {
  std::array<epoll_event, 512> ready;
  while (!stop.stop_requested() && Clock::now() < until) {
    StartConnecting();
    const int count =
        epoll_wait(myEpoll, ready.data(), static_cast<int>(ready.size()), Timeout(Clock::now()));
    if (count < 0 && errno != EINTR) Checked(count, "epoll_wait");
    for (int i = 0; i < count; ++i) {
      const epoll_event& event = ready[static_cast<std::size_t>(i)];
      Handle(*static_cast<Stranger*>(event.data.ptr), event.events);
    }
    WakeRested(Clock::now());
  }
  for (const auto& stranger : myStrangers)
    Close(*stranger);
}

// Only between rounds, so that a readiness that was reported for a closed descriptor is never
// taken for that of a new connection of the same stranger.
void StrangerPool::StartConnecting() {
  while (!myQueue.empty() && myUngreeted < myPart.Custom().connectAtOnce) {
    Stranger* const stranger = myQueue.front();
    myQueue.pop_front();
    StartConnecting(*stranger);
  }
}

void StrangerPool::StartConnecting(Stranger& stranger) {
  stranger.myDescriptor = socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
  if (stranger.myDescriptor < 0) {
    stranger.RestUntil(Clock::now() + kRetryInterval);
    Rest(stranger);
    return;
  }
  stranger.myState = Stranger::State::Connecting;
  ++myUngreeted;
  const int yes = 1;
  setsockopt(stranger.myDescriptor, IPPROTO_TCP, TCP_NODELAY, &yes, sizeof yes);
  if (!myPart.Custom().isReading) {
    // What is not read is for the server to hold and not for the kernel, which keeps megabytes of
    // the long segments of a connection within a machine: a buffer as small as the system allows,
    // and segments as on a network.
    setsockopt(stranger.myDescriptor, SOL_SOCKET, SO_RCVBUF, &yes, sizeof yes);
    setsockopt(stranger.myDescriptor, IPPROTO_TCP, TCP_MAXSEG, &kNetworkSegment,
               sizeof kNetworkSegment);
  }
  stranger.RestUntil(Clock::now() + myPart.Custom().patience);
  Rest(stranger);
  if (!Connect(stranger)) {
    End(stranger);
    return;
  }
  epoll_event event{};
  event.events = stranger.myInterest = InterestOf(stranger);
  event.data.ptr = &stranger;
  Checked(epoll_ctl(myEpoll, EPOLL_CTL_ADD, stranger.myDescriptor, &event), "epoll_ctl");
}

bool StrangerPool::Connect(const Stranger& stranger) {
  const int descriptor = stranger.myDescriptor;
  const auto* const address = reinterpret_cast<const sockaddr*>(&myServer);
  if (!mySources.Bind(descriptor, stranger.myIndex)) return false;
  do {
    if (mySource != 0 && !LoopbackRange::BindTo(descriptor, mySource)) return false;
    if (connect(descriptor, address, sizeof myServer) == 0 || errno == EINPROGRESS) return true;
  } while (errno == EADDRNOTAVAIL && TakeNextSource());
  return false;
}

bool StrangerPool::TakeNextSource() {
  const bool isLocal = ntohl(myServer.sin_addr.s_addr) >> IN_CLASSA_NSHIFT == IN_LOOPBACKNET;
  if (!isLocal || mySources.IsChosen() || mySource == INADDR_LOOPBACK + kLoopbackSources) {
    return false;
  }
  mySource = mySource == 0 ? INADDR_LOOPBACK + 1 : mySource + 1;
  return true;
}

void StrangerPool::Handle(Stranger& stranger, std::uint32_t ready) {
  // Closed earlier in the same round.
  if (stranger.myDescriptor < 0) return;
  if (stranger.myState == Stranger::State::Connecting) {
    FinishConnecting(stranger);
    return;
  }
  if ((ready & EPOLLIN) != 0) {
    Read(stranger);
  } else if ((ready & (EPOLLERR | EPOLLHUP | EPOLLRDHUP)) != 0) {
    End(stranger);
  }
  if (stranger.myDescriptor >= 0 && (ready & EPOLLOUT) != 0) Write(stranger);
  if (stranger.myDescriptor >= 0) Watch(stranger);
}

void StrangerPool::FinishConnecting(Stranger& stranger) {
  int error = 0;
  socklen_t size = sizeof error;
  getsockopt(stranger.myDescriptor, SOL_SOCKET, SO_ERROR, &error, &size);
  if (error != 0) {
    End(stranger);
    return;
  }
  stranger.myState = Stranger::State::Greeting;
  Watch(stranger);
}

void StrangerPool::Read(Stranger& stranger) {
  const bool isActing = stranger.myState == Stranger::State::Acting;
  // MSG_TRUNC on a stream: the kernel throws the bytes away without copying them.
  const ssize_t count = isActing ? recv(stranger.myDescriptor, nullptr, kDiscardBytes, MSG_TRUNC)
                                 : recv(stranger.myDescriptor, myBuffer.data(), myBuffer.size(), 0);
  if (count < 0 && (errno == EAGAIN || errno == EINTR)) return;
  if (count <= 0) {
    End(stranger);
    return;
  }
  if (isActing) return;
  const std::string_view bytes(myBuffer.data(), static_cast<std::size_t>(count));
  const bool inStep = stranger.myCutter.Feed(
      bytes,
      [&](std::int32_t command, std::string_view data) { Receive(stranger, command, data); });
  // A handler may have closed it before the stream went wrong.
  if (!inStep && stranger.myDescriptor >= 0) End(stranger);
}

void StrangerPool::Receive(Stranger& stranger, std::int32_t command, std::string_view payload) {
  if (stranger.myState == Stranger::State::Greeting) {
    if (command != client::command::kNetworkName) {
      End(stranger);
      return;
    }
    EndRest(stranger);
    --myUngreeted;
    ++myCounts.greeted;
    stranger.myState = Stranger::State::LoggingIn;
    myPart.Greeted(stranger);
  }
  if (stranger.myState != Stranger::State::LoggingIn) return;
  const client::Login::State state =
      stranger.myLogin ? stranger.myLogin->Receive(command, payload, stranger.myOutput)
                       : client::Login::State::LoggedIn;
  // Those that stay at the password have their first step on its way now.
  if (state == client::Login::State::LoggedIn ||
      (state != client::Login::State::Refused && myPart.Custom().standing == Standing::AtPassword)) {
    stranger.myState = Stranger::State::Acting;
    ++myCounts.acted;
  } else if (state == client::Login::State::Refused) {
    myCounts.refusal = stranger.myLogin->Refusal().Explanation().toStdString();
    End(stranger);
  }
}

void StrangerPool::Write(Stranger& stranger) {
  if (!stranger.HasOutput() && stranger.myState == Stranger::State::Acting) {
    if (stranger.myIsHangingUp) {
      Close(stranger);
      myQueue.push_back(&stranger);
      return;
    }
    if (!stranger.myRest) {
      myPart.Act(stranger);
      ++stranger.myTurn;
      Rest(stranger);
    }
  }
  if (!stranger.HasOutput()) return;
  const std::string_view piece = stranger.Piece();
  const ssize_t count = send(stranger.myDescriptor, piece.data(), piece.size(), MSG_NOSIGNAL);
  if (count < 0) {
    if (errno != EAGAIN && errno != EINTR) End(stranger);
    return;
  }
  stranger.Consume(static_cast<std::size_t>(count));
  myCounts.bytesSent += static_cast<std::uint64_t>(count);
}

void StrangerPool::Watch(Stranger& stranger) {
  const std::uint32_t interest = InterestOf(stranger);
  if (interest == stranger.myInterest) return;
  epoll_event event{};
  event.events = stranger.myInterest = interest;
  event.data.ptr = &stranger;
  Checked(epoll_ctl(myEpoll, EPOLL_CTL_MOD, stranger.myDescriptor, &event), "epoll_ctl");
}

std::uint32_t StrangerPool::InterestOf(const Stranger& stranger) const {
  switch (stranger.myState) {
    case Stranger::State::Offline:
      return 0;
    case Stranger::State::Connecting:
      return EPOLLOUT;
    case Stranger::State::Greeting:
    case Stranger::State::LoggingIn:
      return stranger.HasOutput() ? EPOLLIN | EPOLLOUT : EPOLLIN;
    case Stranger::State::Acting:
      break;
  }
  const bool isBusy = stranger.HasOutput() || !stranger.myRest;
  return (myPart.Custom().isReading ? EPOLLIN : 0U) | (isBusy ? EPOLLOUT : 0U) | EPOLLRDHUP;
}

void StrangerPool::Rest(Stranger& stranger) {
  if (stranger.myRest) myResting.emplace(*stranger.myRest, &stranger);
}

void StrangerPool::EndRest(Stranger& stranger) {
  if (stranger.myRest) myResting.erase({*stranger.myRest, &stranger});
  stranger.myRest.reset();
}

void StrangerPool::WakeRested(Clock::time_point now) {
  while (!myResting.empty() && myResting.begin()->first <= now) {
    Stranger& stranger = *myResting.begin()->second;
    EndRest(stranger);
    if (stranger.myState == Stranger::State::Offline) {
      myQueue.push_back(&stranger);
    } else if (stranger.IsGreeted()) {
      Watch(stranger);
    } else {
      End(stranger);
    }
  }
}

int StrangerPool::Timeout(Clock::time_point now) const {
  const auto rest = myResting.empty() ? Clock::duration::max() : myResting.begin()->first - now;
  const auto time = std::chrono::ceil<std::chrono::milliseconds>(
      std::clamp<Clock::duration>(rest, Clock::duration(0), kStopLookInterval));
  return static_cast<int>(time.count());
}

void StrangerPool::End(Stranger& stranger) {
  ++myCounts.ended;
  const bool wasGreeted = stranger.IsGreeted();
  Close(stranger);
  myPart.Ended(stranger, wasGreeted);
  if (stranger.myRest) {
    Rest(stranger);
  } else {
    myQueue.push_back(&stranger);
  }
}

void StrangerPool::Close(Stranger& stranger) {
  if (stranger.myDescriptor < 0) return;
  const linger discard{1, 0};
  setsockopt(stranger.myDescriptor, SOL_SOCKET, SO_LINGER, &discard, sizeof discard);
  close(stranger.myDescriptor);
  stranger.myDescriptor = -1;
  if (!stranger.IsGreeted()) --myUngreeted;
  EndRest(stranger);
  stranger.Clear();
}

}  // namespace corvane::swarm
