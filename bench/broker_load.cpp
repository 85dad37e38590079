// The swarm's fanout and rate loads for general publish/subscribe brokers, for comparison with the
// server. Each member is one connection that subscribes to the network's channel and publishes its
// reports there; the message is what the server would relay. Takes the swarm's options and prints
// what the swarm prints.
//
//   corvane-broker-load redis|nats fanout|rate --networks 1 --users 50 ...
//
// Redis: https://redis.io/docs/latest/develop/reference/protocol-spec/ (version 3, in which one
// connection may publish and receive). NATS: https://docs.nats.io/reference/reference-protocols

#include <array>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <memory>
#include <netinet/tcp.h>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <system_error>
#include <unistd.h>
#include <vector>

#include <QCoreApplication>

#include "client/wire.h"
#include "net/descriptor_limit.h"
#include "tools/swarm/delivery_book.h"
#include "tools/swarm/options.h"
#include "tools/swarm/run_result.h"
#include "tools/swarm/server_probe.h"

namespace corvane::swarm {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds kPatience{20};  // for missing deliveries
constexpr std::string_view kLineEnd = "\r\n";
// Length of the words "message" and "reports" in a message of Redis. Every report is longer.
constexpr std::size_t kWordBytes = 7;

// How to speak to a broker. All members share one channel, "reports".
struct Protocol {
  // What a new connection sends; it is ready once its input ends with `readyMark`.
  std::string_view hello;
  std::string_view readyMark;
  // A report is published as this, its length, a line end, the report and a line end.
  std::string_view publish;
  // A line with this prefix ends with the length of the payload that follows; so does a report.
  std::string_view payloadPrefix;

  void AppendPublish(std::string& output, std::string_view payload) const {
    output.append(publish).append(std::to_string(payload.size())).append(kLineEnd);
    output.append(payload).append(kLineEnd);
  }
  std::optional<std::size_t> PayloadLength(std::string_view line) const {
    if (!line.starts_with(payloadPrefix)) return std::nullopt;
    const std::size_t begin = line.find_last_not_of("0123456789") + 1;
    std::size_t length = 0;
    std::from_chars(line.data() + begin, line.data() + line.size(), length);
    return length > kWordBytes ? std::optional(length) : std::nullopt;
  }
};

constexpr Protocol kRedis{.hello = "HELLO 3\r\nSUBSCRIBE reports\r\n",
                          .readyMark = "reports\r\n:1\r\n",
                          .publish = "*3\r\n$7\r\nPUBLISH\r\n$7\r\nreports\r\n$",
                          .payloadPrefix = "$"};
constexpr Protocol kNats{
    .hello =
        "CONNECT {\"verbose\":false,\"echo\":false,\"protocol\":1,\"lang\":\"c++\","
        "\"version\":\"1\"}\r\nSUB reports 1\r\nPING\r\n",
    .readyMark = "PONG\r\n",
    .publish = "PUB reports ",
    .payloadPrefix = "MSG "};

// One member's connection. Sending blocks, briefly with a broker that reads its input.
class Connection {
 public:
  Connection(const sockaddr_in& broker, const Protocol& protocol, Member member)
      : myProtocol(protocol), myMember(member) {
    const int on = 1;
    setsockopt(myDescriptor, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    if (connect(myDescriptor, reinterpret_cast<const sockaddr*>(&broker), sizeof broker) < 0) {
      throw std::system_error(errno, std::generic_category(), "connect");
    }
    Send(protocol.hello);
    while (!std::string_view(myInput).ends_with(protocol.readyMark))
      Receive(0);
    myInput.clear();
  }
  ~Connection() { close(myDescriptor); }
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  int Descriptor() const { return myDescriptor; }
  Member Identity() const { return myMember; }

  void Send(std::string_view bytes) const {
    while (!bytes.empty()) {
      const ssize_t count = send(myDescriptor, bytes.data(), bytes.size(), MSG_NOSIGNAL);
      if (count < 0) throw std::system_error(errno, std::generic_category(), "send");
      bytes.remove_prefix(static_cast<std::size_t>(count));
    }
  }

  // Reads the available input and calls onMessage(payload) for each message.
  template <typename OnMessage>
  void Read(OnMessage&& onMessage) {
    Receive(MSG_DONTWAIT);
    std::string_view rest = myInput;
    while (TakeOne(rest, onMessage)) {
    }
    myInput.erase(0, myInput.size() - rest.size());
  }

 private:
  void Receive(int flags) {
    static std::array<char, 1 << 18> buffer;
    const ssize_t count = recv(myDescriptor, buffer.data(), buffer.size(), flags);
    if (count == 0) throw std::runtime_error("the broker closed a connection");
    if (count < 0 && errno != EAGAIN) throw std::system_error(errno, std::generic_category());
    if (count > 0) myInput.append(buffer.data(), static_cast<std::size_t>(count));
  }

  static std::optional<std::string_view> TakeLine(std::string_view& rest) {
    const std::size_t end = rest.find(kLineEnd);
    if (end == std::string_view::npos) return std::nullopt;
    const std::string_view line = rest.substr(0, end);
    rest.remove_prefix(end + kLineEnd.size());
    return line;
  }

  // Takes a whole message or another line from the front. False if there is none yet.
  template <typename OnMessage>
  bool TakeOne(std::string_view& rest, OnMessage& onMessage) {
    std::string_view left = rest;
    const std::optional<std::string_view> line = TakeLine(left);
    if (!line) return false;
    if (const auto length = myProtocol.PayloadLength(*line)) {
      if (left.size() < *length + kLineEnd.size()) return false;
      onMessage(left.substr(0, *length));
      left.remove_prefix(*length + kLineEnd.size());
    } else if (*line == "PING") {
      Send("PONG\r\n");  // Redis never asks
    }
    rest = left;
    return true;
  }

  const Protocol& myProtocol;
  Member myMember;
  int myDescriptor = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  std::string myInput;
};

class BrokerRun {
 public:
  BrokerRun(const Options& options, const Protocol& protocol)
      : myOptions(options),
        myProtocol(protocol),
        myBook(1, options.users, options.reporters),
        myProbe(options.serverPid.value_or(getpid())) {
    for (std::size_t user = 0; user < options.users; ++user) {
      auto& member = myMembers.emplace_back(
          std::make_unique<Connection>(options.server, protocol, Member{0, user}));
      epoll_event event{};
      event.events = EPOLLIN;
      event.data.ptr = member.get();
      epoll_ctl(myEpoll, EPOLL_CTL_ADD, member->Descriptor(), &event);
    }
  }
  ~BrokerRun() { close(myEpoll); }
  BrokerRun(const BrokerRun&) = delete;
  BrokerRun& operator=(const BrokerRun&) = delete;

  RunResult Execute() {
    myProbe.StartCpuClock();
    myStart = Clock::now();
    myOptions.mode == Mode::Fanout ? FanOut() : SendAtRate();
    RunResult result(myOptions);
    result.elapsed = Clock::now() - myStart;
    result.deliveries = Deliveries{myBook.Sent(), myBook.Expected(), myBook.Received(),
                                   myBook.Missing(), myLatency};
    result.unexpected = myBook.Unexpected();
    if (myOptions.serverPid) result.serverCpu = myProbe.CpuTime();
    return result;
  }

 private:
  // All reporters send a burst, and the next once all of it has come.
  void FanOut() {
    while (Clock::now() - myStart < *myOptions.duration) {
      myBurstStart = Clock::now();
      for (std::size_t user = 0; user < myOptions.reporters; ++user)
        Report(user, myOptions.burst);
      Drain();
    }
  }

  // The members report in turn, spread evenly.
  void SendAtRate() {
    const auto total = static_cast<std::uint64_t>(
        std::chrono::duration<double>(*myOptions.duration).count() / SecondsBetween());
    for (std::uint64_t number = 0; number < total; ++number) {
      while (Clock::now() < DueTime(number))
        Serve(DueTime(number));
      Report(number % myOptions.users, 1);
    }
    Drain();
  }

  double SecondsBetween() const {
    return 1 / (myOptions.reportsPerSecond * static_cast<double>(myOptions.users));
  }
  Clock::time_point DueTime(std::uint64_t number) const {
    const std::chrono::duration<double> offset(static_cast<double>(number) * SecondsBetween());
    return myStart + std::chrono::duration_cast<Clock::duration>(offset);
  }

  void Report(std::size_t user, std::size_t count) {
    const Member sender{0, user};
    myOutput.clear();
    for (std::size_t i = 0; i < count; ++i) {
      myReport.clear();
      client::AppendReport(myReport, ReportOf(sender, myBook.Send(sender)));
      myReport.replace(0, client::kHeaderBytes, UserNameOf(myOptions.userPrefix, sender) + "|");
      myProtocol.AppendPublish(myOutput, myReport);
    }
    myMembers[user]->Send(myOutput);
  }

  void Drain() {
    const auto giveUp = Clock::now() + kPatience;
    while (myBook.Missing() > 0 && Clock::now() < giveUp)
      Serve(giveUp);
  }

  // Waits until then for messages, and takes those that are available.
  void Serve(Clock::time_point until) {
    std::array<epoll_event, 256> events;
    const auto left = std::max(until - Clock::now(), Clock::duration::zero());
    const auto seconds = std::chrono::floor<std::chrono::seconds>(left);
    const timespec patience{seconds.count(), (left - seconds).count()};
    const int count = epoll_pwait2(myEpoll, events.data(), events.size(), &patience, nullptr);
    for (int i = 0; i < count; ++i) {
      auto& member = *static_cast<Connection*>(events[static_cast<std::size_t>(i)].data.ptr);
      member.Read([&](std::string_view payload) { Take(member.Identity(), payload); });
    }
  }

  void Take(Member recipient, std::string_view payload) {
    const std::optional<client::MemberRecord> relay = client::ParseRelay(payload);
    const auto sender = relay ? ParseUserName(myOptions.userPrefix, relay->name) : std::nullopt;
    if (!sender) return myBook.ReceiveForeign();
    // Some brokers send a member its own reports, too.
    if (*sender == recipient || !myBook.Receive(recipient, *sender, relay->report)) return;
    const auto sequence = static_cast<std::uint64_t>(relay->report.x);
    const auto sent = myOptions.mode == Mode::Fanout
                          ? myBurstStart
                          : DueTime((sequence - 1) * myOptions.users + sender->user);
    myLatency.Add(Clock::now() - sent);
  }

  const Options& myOptions;
  const Protocol& myProtocol;
  DeliveryBook myBook;
  ServerProbe myProbe;
  LatencyHistogram myLatency;
  int myEpoll = epoll_create1(EPOLL_CLOEXEC);
  std::vector<std::unique_ptr<Connection>> myMembers;
  Clock::time_point myStart;
  Clock::time_point myBurstStart;
  std::string myReport;
  std::string myOutput;
};

const Protocol& ProtocolOf(const QString& broker) {
  if (broker == "redis") return kRedis;
  if (broker == "nats") return kNats;
  throw std::runtime_error("the first word is redis or nats");
}

int Main(int argumentCount, char** arguments) {
  const QCoreApplication application(argumentCount, arguments);
  try {
    QStringList words = QCoreApplication::arguments();
    const Protocol& protocol = ProtocolOf(words.size() > 1 ? words.takeAt(1) : QString());
    const ParsedOptions parsed = ParseOptions(words);
    if (!parsed.options) throw std::runtime_error(parsed.text);
    if (parsed.options->reporters == 0 || parsed.options->networks.size() != 1) {
      throw std::runtime_error("fanout or rate, in one network");
    }
    RaiseDescriptorLimit();
    const RunResult result = BrokerRun(*parsed.options, protocol).Execute();
    std::printf("%s\n%s\n", result.ToText().c_str(), result.ToJson().c_str());
    return result.IsGood() ? 0 : 1;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "corvane-broker-load: %s\n", error.what());
    return 1;
  }
}

}  // namespace
}  // namespace corvane::swarm

int main(int argumentCount, char** arguments) {
  return corvane::swarm::Main(argumentCount, arguments);
}
