#include <algorithm>
#include <array>
#include <sys/resource.h>

#include "client/report.h"
#include "tools/swarm/delivery_book.h"
#include "tools/swarm/hostile/attack.h"

namespace corvane::swarm {

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

constexpr std::size_t kMiB = std::size_t{1} << 20;
constexpr std::size_t kBlockBytes = kMiB / 4;

std::string Repeated(std::string_view text) {
  std::string block;
  while (block.size() < kBlockBytes)
    block.append(text);
  return block;
}

std::string Frame(std::int32_t command, std::string_view payload) {
  std::string frame;
  client::AppendFrame(frame, command, payload);
  return frame;
}

std::string Header(std::int32_t command, std::size_t payloadBytes) {
  std::string header;
  client::AppendHeader(header, command, payloadBytes);
  return header;
}

std::string Report(std::uint32_t sequence) {
  std::string report;
  client::AppendReport(report, ReportOf({}, sequence));
  return report;
}

void Stay(Client& stranger) {
  stranger.Hold();
}

// Holds memory: begins the longest possible message, sends much of it and never ends it.
Attack Hoarders() {
  constexpr std::size_t kMaxPayload = 0x7fffffff - client::kHeaderBytes;
  const auto act = [block = Repeated("x")](Client& stranger) {
    if (stranger.Turn() > 0) return stranger.Hold();
    stranger.Send(Header(client::command::kNetworkName, kMaxPayload));
    // A little more than a power of two, for a server whose buffers double.
    stranger.SendFiller(block, 66 * kMiB);
  };
  return {.act = act, .strangers = 17};
}

// Makes the server hold output that nobody reads: once all are in, a few of them report in bursts.
Attack NeverReaders() {
  constexpr std::size_t kStrangers = 500;
  constexpr std::size_t kReporters = 10;
  constexpr std::uint32_t kBurst = 100;
  std::string burst;
  for (std::uint32_t sequence = 1; sequence <= kBurst; ++sequence)
    burst += Report(sequence);
  const auto act = [burst, arrived = std::size_t{0}](Client& stranger) mutable {
    if (stranger.Turn() == 0) ++arrived;
    if (stranger.Identity().user >= kReporters) return stranger.Hold();
    if (arrived >= kStrangers) stranger.Send(burst);
    stranger.RestUntil(Clock::now() + milliseconds(100));
  };
  return {
      .act = act, .standing = Standing::OtherNetwork, .strangers = kStrangers, .isReading = false};
}

// One report of a user with such a name is much output for every member. Each reports and leaves
// again, together with the others.
Attack GiantNames() {
  const auto act = [](Client& stranger) {
    switch (stranger.Turn()) {
      case 0:
        return stranger.Send(Report(1) + Report(2));
      case 1:
        return stranger.RestUntil(Clock::now() + seconds(1));
      default:
        return stranger.HangUp();
    }
  };
  return {.act = act,
          .standing = Standing::SameNetwork,
          .strangers = 3,
          .nameBytes = kMiB,  // the longest that the server takes
          .absence = seconds(1)};
}

// Network names whose length doubles from `minBytes` to `maxBytes`, over and over; the server
// quotes them when it refuses them.
Attack LongSteps(std::size_t strangers, std::string_view text, std::size_t minBytes,
                 std::size_t maxBytes) {
  const auto act = [block = Repeated(text), minBytes, maxBytes](Client& stranger) {
    std::size_t bytes = minBytes;
    for (std::size_t turn = 0; turn < stranger.Turn(); ++turn)
      bytes = bytes < maxBytes ? 2 * bytes : minBytes;
    stranger.Send(Header(client::command::kNetworkName, bytes));
    stranger.SendFiller(block, bytes);
  };
  return {.act = act, .strangers = strangers};
}

// Fills the server's log with names that are expensive to write.
Attack LogFloods() {
  const auto act =
      [step = Frame(client::command::kNetworkName, std::string(4000, '\1'))](Client& stranger) {
        if (stranger.Turn() > 0) return stranger.HangUp();
        stranger.Send(step);
      };
  return {.act = act, .strangers = 100, .connectAtOnce = 100};
}

// The same short messages over and over, as fast as possible.
Attack Flood(Standing standing, std::size_t strangers, std::string_view messages,
             std::size_t nameBytes = 0) {
  const auto act = [block = Repeated(messages)](Client& stranger) {
    stranger.SendFiller(block, block.size());
  };
  return {.act = act, .standing = standing, .strangers = strangers, .nameBytes = nameBytes};
}

Attack TinyMessages() {
  constexpr std::int32_t kUnknown = 77;
  constexpr std::int32_t kIsAdmin = 9;
  return Flood(Standing::SameNetwork, 10,
               Frame(kUnknown, "") + Frame(client::command::kMember, "") + Frame(kIsAdmin, ""));
}

Attack WrongSteps() {
  return Flood(Standing::Outside, 4,
               Frame(client::command::kNetworkName, "no such network") +
                   Frame(client::command::kPassword, "no such password") +
                   Frame(client::command::kUserName, "too early"));
}

// All connect at the same moment, stay for half a second, end at the same moment and come back.
Attack Rush() {
  const auto act = [](Client& stranger) {
    if (stranger.Turn() > 0) return stranger.HangUp();
    const auto halves = Clock::now().time_since_epoch() / milliseconds(500);
    stranger.RestUntil(Clock::time_point((halves + 1) * milliseconds(500)));
  };
  return {.act = act, .strangers = 1000, .connectAtOnce = 1000};
}

// A report a byte at a time. All reports are equal, so the server relays one.
Attack SlowWriters() {
  const auto act = [report = Report(1)](Client& stranger) {
    stranger.Send(std::string_view(report).substr(stranger.Turn() % report.size(), 1));
  };
  return {.act = act, .standing = Standing::OtherNetwork, .strangers = 200};
}

// Almost as many connections as this process may have.
Attack Connections() {
  constexpr rlim_t kSpare = 300;
  constexpr rlim_t kEnough = 100'000;
  rlimit limit{};
  getrlimit(RLIMIT_NOFILE, &limit);
  return {.act = Stay,
          .strangers = std::clamp(limit.rlim_cur, kSpare, kEnough) - kSpare,
          .connectAtOnce = 100};
}

constexpr std::array kAttacks = {
    NamedAttack{"hoarders", "17 strangers, 66 MiB each of a message that never ends", Hoarders},
    NamedAttack{"never-readers", "500 members of another network who never read, while 10 report",
                NeverReaders},
    NamedAttack{"giant-names",
                "3 members whose user names have 1 MiB report and leave, over and over",
                GiantNames},
    NamedAttack{"long-names",
                "2 members whose user names have 4000 bytes report as fast as possible",
                [] { return Flood(Standing::SameNetwork, 2, Report(1) + Report(2), 4000); }},
    NamedAttack{"giant-steps", "network names of 64, 128 and 256 MiB, over and over",
                [] { return LongSteps(1, "x", 64 * kMiB, 256 * kMiB); }},
    NamedAttack{"costly-names", "network names of 32 MiB that are expensive to fold, over and over",
                [] { return LongSteps(2, "\u00e4", 32 * kMiB, 32 * kMiB); }},
    NamedAttack{"refused-names", "network names of 8 MiB, over and over",
                [] { return LongSteps(4, "x", 8 * kMiB, 8 * kMiB); }},
    NamedAttack{
        "log-floods",
        "100 strangers ask for networks with names of 4000 control characters, and come back",
        LogFloods},
    NamedAttack{
        "seats", "60 strangers name a network, have no password and stay",
        [] { return Attack{.act = Stay, .standing = Standing::AtPassword, .strangers = 60}; }},
    NamedAttack{
        "lists", "900 members of another network ask for its members, as fast as possible",
        [] { return Flood(Standing::OtherNetwork, 900, Frame(client::command::kMember, "")); }},
    NamedAttack{"wrong-steps", "wrong login steps, as fast as possible", WrongSteps},
    NamedAttack{"rush", "1000 strangers connect and end at the same moments", Rush},
    NamedAttack{"slow-writers", "200 members of another network send a byte at a time",
                SlowWriters},
    NamedAttack{"tiny-messages", "10 members send messages of 8 bytes, as fast as possible",
                TinyMessages},
    NamedAttack{"connections", "strangers connect until this program's descriptors run out",
                Connections},
};

}  // namespace

std::span<const NamedAttack> Attacks() {
  return kAttacks;
}

const NamedAttack* FindAttack(std::string_view name) {
  const auto found = std::ranges::find(kAttacks, name, &NamedAttack::name);
  return found == kAttacks.end() ? nullptr : &*found;
}

}  // namespace corvane::swarm
