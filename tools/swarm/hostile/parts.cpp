#include "tools/swarm/hostile/parts.h"

#include <algorithm>
#include <array>
#include <sys/resource.h>

#include "client/report.h"
#include "tools/swarm/delivery_book.h"

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

// Holds memory: begins the longest message that there can be, sends much of it and never ends it.
class Hoarders : public HostilePart {
 public:
  Hoarders() : HostilePart({.strangers = 17}) {}

  void Act(Client& stranger) override {
    if (stranger.Turn() > 0) {
      stranger.Hold();
      return;
    }
    stranger.Send(Header(client::command::kNetworkName, kLongestPayload));
    // A little more than a power of two, for a server whose buffers double.
    stranger.SendFiller(myBlock, 66 * kMiB);
  }

 private:
  static constexpr std::size_t kLongestPayload = 0x7fffffff - client::kHeaderBytes;

  std::string myBlock = Repeated("x");
};

// Makes the server hold what nobody reads: when all are in, a few of them report in bursts to all.
class NeverReaders : public HostilePart {
 public:
  NeverReaders()
      : HostilePart({.standing = Standing::OtherNetwork, .strangers = 500, .isReading = false}) {
    for (std::uint32_t sequence = 1; sequence <= kBurst; ++sequence)
      myBurst += Report(sequence);
  }

  void Act(Client& stranger) override {
    if (stranger.Turn() == 0) ++myArrived;
    if (stranger.Identity().user >= kReporters) {
      stranger.Hold();
      return;
    }
    if (myArrived >= Custom().strangers) stranger.Send(myBurst);
    stranger.RestUntil(Clock::now() + milliseconds(100));
  }

 private:
  static constexpr std::size_t kReporters = 10;
  static constexpr std::uint32_t kBurst = 100;

  std::string myBurst;
  std::size_t myArrived = 0;
};

// Names so long that one report of an owner is much for everybody in the network: each reports and
// leaves again, together with the others.
class GiantNames : public HostilePart {
 public:
  GiantNames() : HostilePart({.standing = Standing::SameNetwork, .strangers = 3}) {}

  std::string UserName(std::size_t index) const override {
    std::string name = HostilePart::UserName(index);
    name.resize(kMiB, 'n');  // the longest that is taken
    return name;
  }
  void Act(Client& stranger) override {
    switch (stranger.Turn()) {
      case 0:
        stranger.Send(Report(1) + Report(2));
        return;
      case 1:
        stranger.RestUntil(Clock::now() + seconds(1));
        return;
      default:
        stranger.HangUp();
    }
  }
  void Ended(Client& stranger) override { stranger.RestUntil(Clock::now() + seconds(1)); }
};

// First steps with very long names, which the server quotes when it refuses them.
class LongNames : public HostilePart {
 public:
  LongNames(std::size_t strangers, std::string_view text, std::size_t least, std::size_t most)
      : HostilePart({.strangers = strangers}),
        myBlock(Repeated(text)),
        myLeast(least),
        myMost(most) {}

  void Act(Client& stranger) override {
    std::size_t bytes = myLeast;
    for (std::size_t turn = 0; turn < stranger.Turn(); ++turn)
      bytes = bytes < myMost ? 2 * bytes : myLeast;
    stranger.Send(Header(client::command::kNetworkName, bytes));
    stranger.SendFiller(myBlock, bytes);
  }

 private:
  std::string myBlock;
  std::size_t myLeast;
  std::size_t myMost;
};

// Lines in the server's log: each asks for a network whose name is dear to write out, leaves and
// comes back.
class LogFloods : public HostilePart {
 public:
  LogFloods() : HostilePart({.strangers = 100, .connectAtOnce = 100}) {}

  void Act(Client& stranger) override {
    if (stranger.Turn() > 0) {
      stranger.HangUp();
    } else {
      stranger.Send(myStep);
    }
  }

 private:
  std::string myStep = Frame(client::command::kNetworkName, std::string(4000, '\1'));
};

// The same short messages over and over, as fast as they go.
class Flood : public HostilePart {
 public:
  Flood(const Habits& habits, std::string_view messages, std::size_t shortestName = 0)
      : HostilePart(habits), myBlock(Repeated(messages)), myShortestName(shortestName) {}

  std::string UserName(std::size_t index) const override {
    std::string name = HostilePart::UserName(index);
    name.resize(std::max(name.size(), myShortestName), 'n');
    return name;
  }
  void Act(Client& stranger) override { stranger.SendFiller(myBlock, myBlock.size()); }

 private:
  std::string myBlock;
  std::size_t myShortestName;
};

// All connect in the same moment, stay for half a second, end in the same moment and come back.
class Rush : public HostilePart {
 public:
  Rush() : HostilePart({.strangers = 1000, .connectAtOnce = 1000}) {}

  void Act(Client& stranger) override {
    if (stranger.Turn() > 0) {
      stranger.HangUp();
      return;
    }
    const auto halves = Clock::now().time_since_epoch() / milliseconds(500);
    stranger.RestUntil(Clock::time_point((halves + 1) * milliseconds(500)));
  }
};

// Reports that come a byte at a time. They say the same each time and are relayed once.
class SlowWriters : public HostilePart {
 public:
  SlowWriters() : HostilePart({.standing = Standing::OtherNetwork, .strangers = 200}) {}

  void Act(Client& stranger) override {
    stranger.Send(std::string_view(myReport).substr(stranger.Turn() % myReport.size(), 1));
  }

 private:
  std::string myReport = Report(1);
};

// Nothing more than its first step: it has named a network, has no password, and stays.
class Seats : public HostilePart {
 public:
  Seats() : HostilePart({.standing = Standing::AtPassword, .strangers = 60}) {}

  void Act(Client& stranger) override { stranger.Hold(); }
};

// As many connections as this process may have, some room left.
class Connections : public HostilePart {
 public:
  Connections() : HostilePart({.strangers = Most(), .connectAtOnce = 100}) {}

  void Act(Client& stranger) override { stranger.Hold(); }

 private:
  static std::size_t Most() {
    constexpr rlim_t kRoom = 300;
    constexpr rlim_t kEnough = 100'000;
    rlimit limit{};
    getrlimit(RLIMIT_NOFILE, &limit);
    return std::clamp(limit.rlim_cur, kRoom, kEnough) - kRoom;
  }
};

template <typename Part, typename... Arguments>
std::unique_ptr<HostilePart> Make(const Arguments&... arguments) {
  return std::make_unique<Part>(arguments...);
}

std::unique_ptr<HostilePart> MakeTinyMessages() {
  constexpr std::int32_t kUnknown = 77;
  constexpr std::int32_t kAmIAdministrator = 9;
  return Make<Flood>(
      HostilePart::Habits{.standing = Standing::SameNetwork, .strangers = 10},
      Frame(kUnknown, "") + Frame(client::command::kMember, "") + Frame(kAmIAdministrator, ""));
}

std::unique_ptr<HostilePart> MakeLongNames() {
  constexpr std::size_t kNameBytes = 4000;
  return Make<Flood>(HostilePart::Habits{.standing = Standing::SameNetwork, .strangers = 2},
                     Report(1) + Report(2), kNameBytes);
}

std::unique_ptr<HostilePart> MakeLists() {
  return Make<Flood>(HostilePart::Habits{.standing = Standing::OtherNetwork, .strangers = 900},
                     Frame(client::command::kMember, ""));
}

std::unique_ptr<HostilePart> MakeWrongSteps() {
  return Make<Flood>(HostilePart::Habits{.strangers = 4},
                     Frame(client::command::kNetworkName, "no such network") +
                         Frame(client::command::kPassword, "no such password") +
                         Frame(client::command::kUserName, "too early"));
}

constexpr std::array kParts = {
    PartInfo{"hoarders", "17 strangers, 66 MiB each of a message that never ends",
             [] { return Make<Hoarders>(); }},
    PartInfo{"never-readers", "500 members of another network who never read, while 10 report",
             [] { return Make<NeverReaders>(); }},
    PartInfo{"giant-names", "3 members whose user names have 1 MiB report and leave, over and over",
             [] { return Make<GiantNames>(); }},
    PartInfo{"long-names", "2 members whose user names have 4000 bytes report as fast as they go",
             MakeLongNames},
    PartInfo{"giant-steps", "network names of 64, 128 and 256 MiB, over and over",
             [] { return Make<LongNames>(1, "x", 64 * kMiB, 256 * kMiB); }},
    PartInfo{"costly-names", "network names of 32 MiB that are dear to fold, over and over",
             [] { return Make<LongNames>(2, "\u00e4", 32 * kMiB, 32 * kMiB); }},
    PartInfo{"refused-names", "network names of 8 MiB, over and over",
             [] { return Make<LongNames>(4, "x", 8 * kMiB, 8 * kMiB); }},
    PartInfo{"log-floods",
             "100 strangers ask for networks with names of 4000 control characters, and come back",
             [] { return Make<LogFloods>(); }},
    PartInfo{"seats", "60 strangers name a network, have no password and stay",
             [] { return Make<Seats>(); }},
    PartInfo{"lists", "900 members of another network ask for its members, as fast as they go",
             MakeLists},
    PartInfo{"wrong-steps", "log-in steps that are wrong, as fast as they go", MakeWrongSteps},
    PartInfo{"rush", "1000 strangers connect and end at the same moments",
             [] { return Make<Rush>(); }},
    PartInfo{"slow-writers", "200 members of another network send a byte at a time",
             [] { return Make<SlowWriters>(); }},
    PartInfo{"tiny-messages", "10 members send messages of 8 bytes, as fast as they go",
             MakeTinyMessages},
    PartInfo{"connections", "strangers connect until this program's descriptors run out",
             [] { return Make<Connections>(); }},
};

}  // namespace

std::span<const PartInfo> HostileParts() {
  return kParts;
}

const PartInfo* FindPart(std::string_view name) {
  const auto part =
      std::ranges::find_if(kParts, [&](const PartInfo& info) { return name == info.name; });
  return part == kParts.end() ? nullptr : &*part;
}

}  // namespace corvane::swarm
