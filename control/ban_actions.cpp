#include "control/ban_actions.h"

#include <algorithm>
#include <utility>

#include <QJsonArray>
#include <QJsonDocument>

#include "app/operator.h"
#include "control/answers.h"
#include "control/lookup.h"
#include "framework/dates.h"
#include "framework/ip_address.h"
#include "framework/text.h"
#include "framework/visible_text.h"
#include "net/poll_loop.h"
#include "server/map_socket.h"

namespace corvane {
namespace {

constexpr std::size_t kMaxEntries = std::size_t{4} << 20;
constexpr std::size_t kMaxShown = 60;   // of a wrong line
constexpr std::size_t kIPv6Share = 10;  // of the memory: a text beside two numbers
constexpr std::uint64_t kMaxUnforced = std::uint64_t{1} << 24;  // addresses: a /8
// No client has an address outside.
constexpr AddressRange kPossible{0x01000000, 0xDFFFFFFF};

bool IsPossible(const AddressRange& range) {
  return range.first >= kPossible.first && range.last <= kPossible.last;
}

AddressRange ExpectRange(const std::string& text, bool isForced) {
  const std::string expected =
      "expected an IPv4 range such as 203.0.113.0/24 or 203.0.113.7-203.0.113.99";
  const auto range = RangeFromText(text);
  if (!range && text.find(':') != std::string::npos) {
    throw Misused("IPv6 addresses cannot be banned as ranges, only one by one; " + expected);
  }
  const auto slash = text.find('/');
  const auto address = IPv4FromText(std::string_view(text).substr(0, slash));
  const bool isPrefix = slash != std::string::npos && address;
  const auto prefix = isPrefix ? PrefixFromText("0.0.0.0" + text.substr(slash)) : std::nullopt;
  if (!range && prefix) {
    const std::uint32_t mask = ~prefix->last;
    throw Misused('"' + text + "\" has bits set beyond its length; expected " +
                  TextOf({*address & mask, *address | prefix->last}));
  }
  if (!range) {
    const std::string shown = TextFromDisplay(VisibleText(text, kMaxShown));
    throw Misused('"' + shown + "\" is no address or range; " + expected);
  }
  if (!IsPossible(*range)) {
    throw Misused(text + " has addresses that no client can have; expected a range within " +
                  TextOf(kPossible));
  }
  const std::uint64_t size = std::uint64_t{range->last} - range->first + 1;
  if (size > kMaxUnforced && !isForced) {
    throw Refused(text + " has " + std::to_string(size) +
                  " addresses, more than a /8; use --force to ban them all");
  }
  return *range;
}

}  // namespace

QDateTime EndOf(const Request& request, const Operator& op) {
  const auto text = request.OptionalText("for");
  if (!text) return {};
  const auto seconds = SecondsFromText(*text);
  if (!seconds) {
    throw Misused("\"for\" takes a time such as 90s, 30m, 2h, 2d or 1w, up to ten years, not \"" +
                  *text + '"');
  }
  return op.Listener().Context.bans.Now().addSecs(*seconds);
}

QByteArray BannedLine(const Operator& op, const std::string& text, const QDateTime& until,
                      bool isStored) {
  const std::string end = until.isValid() ? " until " + StoredDate(until) : "";
  if (isStored) return DoneLine(text + end + '.');
  return DoneLine(text + end + ". The ban is in force but not stored (database: " +
                  op.StoreError() + "); the server keeps trying.");
}

QByteArray BanActions::BanRange(const Request& request) {
  const AddressRange range = ExpectRange(request.Text("range"), request.Flag("force"));
  const std::string reason = request.OptionalText("reason").value_or("");
  const QDateTime until = EndOf(request, myOperator);
  const std::size_t count = myOperator.SessionsIn(range).size();
  const std::string clients = std::to_string(count) + " connected client(s)";
  if (request.Flag("dry-run")) {
    return DoneLine("Would ban " + TextOf(range) + " and disconnect " + clients + '.');
  }
  const bool isStored = myOperator.BanRange(range, reason, until);
  return BannedLine(myOperator, "Disconnected " + clients + " and banned " + TextOf(range), until,
                    isStored);
}

QByteArray BanActions::UnbanRange(const Request& request) {
  const std::string wanted = request.Text("range");
  const auto range = RangeFromText(wanted);
  std::vector<std::int64_t> ids;
  for (const corvane::BanRange& ban : myOperator.BannedRanges()) {
    if (ban.range == range || std::to_string(ban.id) == wanted) ids.push_back(ban.id);
  }
  if (ids.empty()) throw Refused("there is no banned range " + wanted);
  if (!myOperator.LiftRanges(ids)) RefuseForDatabase(myOperator);
  return DoneLine("Lifted " + std::to_string(ids.size()) + " range(s).");
}

QByteArray BanActions::Import(const Request& request,
                              std::function<void(const QByteArray&)> answer) {
  const auto number = request.OptionalNumber("import", 1, 1'000'000'000);
  if (!number) {
    ++myImport;
    myList = {};
    myLines = 0;
    mySkipped = 0;
  } else if (*number != myImport) {
    throw Refused("another import has begun; nothing of this one is stored");
  }
  const auto lines = request.OptionalText("lines");
  if (!lines) {
    const auto done = [answer = std::move(answer), skipped = mySkipped](const std::string& error,
                                                                        BanImport& import) {
      if (!error.empty()) return answer(RefusalLine("nothing is stored: database: " + error));
      answer(DoneLine("Banned " + std::to_string(import.AddressCount()) + " address(es) and " +
                      std::to_string(import.Ranges().size()) +
                      " range(s) that were not banned yet; skipped " + std::to_string(skipped) +
                      " line(s)."));
    };
    ++myImport;
    if (!myOperator.ImportBans(std::exchange(myList, {}),
                               request.OptionalText("reason").value_or(""),
                               EndOf(request, myOperator), done)) {
      throw Refused("another list is being stored; nothing of this one is stored");
    }
    return {};
  }
  const bool skips = request.Flag("skip");
  for (std::string_view rest = *lines; !rest.empty();) {
    const auto end = std::min(rest.find('\n'), rest.size());
    const std::string_view line = rest.substr(0, end);
    rest.remove_prefix(std::min(end + 1, rest.size()));
    ++myLines;
    try {
      TakeLine(Trimmed(line.substr(0, line.find_first_of("#;"))), request.Flag("force"));
    } catch (const Refused& refused) {
      if (!skips) {
        throw Misused("line " + std::to_string(myLines) + ": " + refused.what() +
                      "; nothing is stored, use --skip to leave such lines out");
      }
      ++mySkipped;
    }
  }
  return DoneLine(QJsonObject{{"import", myImport}});
}

void BanActions::TakeLine(std::string_view line, bool isForced) {
  if (line.empty()) return;
  if (myList.ranges.size() + kIPv6Share * myList.addresses.size() >= kMaxEntries) {
    throw Refused("a list has at most 4194304 entries, with each IPv6 address for ten");
  }
  const auto address = AddressFromText(line);
  if (address && !IPv4FromText(*address)) return myList.addresses.push_back(*address);
  myList.ranges.push_back(ExpectRange(std::string(line), isForced));
}

QByteArray BanActions::Export(const Request&) {
  QByteArray lines;
  const auto add = [&](const std::string& text, bool isPossible) {
    const QString line = DisplayText(isPossible ? text : "# no client's address: " + text);
    const QByteArray list = QJsonDocument(QJsonArray{line}).toJson(QJsonDocument::Compact);
    lines += (lines.isEmpty() ? "" : ",") + list.mid(1, list.size() - 2);
  };
  const auto addBan = [&add](const corvane::Ban& ban) {
    const auto range = RangeFromText(ban.address);
    add(ban.address, range ? IsPossible(*range) : AddressFromText(ban.address) == ban.address);
  };
  if (!myOperator.ForEachBan(addBan)) RefuseForDatabase(myOperator);
  for (const corvane::BanRange& ban : myOperator.BannedRanges()) {
    add(TextOf(ban.range), IsPossible(ban.range));
    myOperator.Loop().GiveWay();
  }
  return "{\"ok\":true,\"lines\":[" + lines + "]}";
}

}  // namespace corvane
