#include "control/metrics.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>
#include <vector>

#include <QByteArray>

#include "app/operator.h"
#include "app/server_log.h"
#include "control/process_resources.h"
#include "framework/text.h"
#include "framework/visible_text.h"
#include "geo/location_lookup.h"
#include "net/os_socket.h"
#include "net/poll_loop.h"
#include "server/client_socket.h"
#include "server/map_socket.h"
#include "storage/database_connection.h"
#include "updater/version.h"

namespace corvane {
namespace {

using Kind = ServerEvent::Kind;

constexpr std::size_t kMaxNetworks = 100;

// Of connections, by ClientSocket::State.
constexpr std::array<std::string_view, 8> kStates = {"idle", "greeting",  "network", "password",
                                                     "name", "logged-in", "refused", "gone"};

struct Family {
  std::string_view type;  // of the events
  std::string_view name;
  std::string_view help;
};
constexpr Family kEventFamilies[] = {
    {"login", "logins_total", "Completed logins."},
    {"leave", "leaves_total", "Members who left, by reason."},
    {"refused", "refused_total", "Refused connections and login steps, by reason."},
    {"kick", "kicks_total", "Kicked users."},
    {"ban", "bans_total", "Bans that were issued; a list counts once."},
    {"lifted", "bans_lifted_total", "Liftings of bans."},
    {"message", "messages_total", "Messages of the operator and of administrators."},
    {"network", "network_changes_total", "Networks added, changed and removed."},
};

std::string LabelText(std::string_view value) {
  std::string text;
  for (const char c : TextFromDisplay(VisibleText(value))) {
    if (c == '\\' || c == '"') text += '\\';
    text += c;
  }
  return text;
}

std::string Number(double value) {
  return QByteArray::number(value, 'g', 12).toStdString();
}

std::string Label(std::string_view name, std::string_view value) {
  return std::string(name) + "=\"" + LabelText(value) + '"';
}

class Writer {
 public:
  explicit Writer(std::string commonLabel) : myCommonLabel(std::move(commonLabel)) {}

  void Begin(std::string_view name, std::string_view type, std::string_view help) {
    myName = "corvane_" + std::string(name);
    myText += "# HELP " + myName + ' ' + std::string(help) + "\n# TYPE " + myName + ' ' +
              std::string(type) + '\n';
  }
  void Add(std::string_view suffix, const std::string& label, const std::string& value) {
    std::string labels = myCommonLabel;
    labels += !labels.empty() && !label.empty() ? "," + label : label;
    myText += myName + std::string(suffix) + (labels.empty() ? "" : '{' + labels + '}') + ' ' +
              value + '\n';
  }
  void Labelled(std::string_view label, std::string_view value, std::uint64_t number) {
    Add("", Label(label, value), std::to_string(number));
  }
  void Counter(std::string_view name, std::string_view help, std::uint64_t value) {
    Begin(name, "counter", help);
    Add("", "", std::to_string(value));
  }
  void Gauge(std::string_view name, std::string_view help, std::uint64_t value) {
    Begin(name, "gauge", help);
    Add("", "", std::to_string(value));
  }
  std::string Take() { return std::move(myText); }

 private:
  const std::string myCommonLabel;
  std::string myName;
  std::string myText;
};

void AddEvents(Writer& writer, const ServerEvents& events) {
  for (const Family& family : kEventFamilies) {
    writer.Begin(family.name, "counter", family.help);
    for (std::size_t i = 0; i < static_cast<std::size_t>(Kind::kCount); ++i) {
      const auto kind = static_cast<Kind>(i);
      const EventName name = NameOf(kind);
      if (name.type != family.type) continue;
      if (name.reason.empty()) {
        writer.Add("", "", std::to_string(events.Count(kind)));
      } else {
        writer.Labelled("reason", name.reason, events.Count(kind));
      }
    }
  }
}

struct NetworkFigures {
  std::string name;
  std::uint64_t members = 0;
  std::uint64_t seats = 0;
  std::uint64_t maxSeats = 0;
};

std::vector<NetworkFigures> FiguresOf(const std::vector<NetworkRef>& networks,
                                      const Roster& roster) {
  std::vector<NetworkFigures> figures;
  for (const NetworkRef& network : networks) {
    const std::string name =
        figures.size() < kMaxNetworks ? LabelText(network->NetworkName) : "other";
    auto found = figures.begin();
    // Two networks may be shown by the same name, and a label may stand only once.
    while (found != figures.end() && found->name != name)
      ++found;
    if (found == figures.end()) found = figures.insert(found, {name});
    found->members += roster.MembersOf(*network)->size();
    found->seats += static_cast<std::uint64_t>(network->CurrentUsers);
    found->maxSeats += static_cast<std::uint64_t>(std::max(network->MaxUsers, 0));
  }
  return figures;
}

void AddNetworks(Writer& writer, const std::vector<NetworkFigures>& figures) {
  const auto add = [&](std::string_view name, std::string_view help,
                       std::uint64_t NetworkFigures::*figure) {
    writer.Begin(name, "gauge", help);
    for (const NetworkFigures& network : figures)
      writer.Add("", "network=\"" + network.name + '"', std::to_string(network.*figure));
  };
  add("members", "Sessions that get the network's reports.", &NetworkFigures::members);
  add("seats_taken", "Seats that are taken.", &NetworkFigures::seats);
  add("seats", "Seats that the network has.", &NetworkFigures::maxSeats);
}

void AddConnections(Writer& writer, Operator& op) {
  std::array<std::uint64_t, kStates.size()> counts{};
  const auto connections = op.Listener().ActiveConnections();
  for (const auto& connection : *connections) {
    const auto& session = static_cast<const ClientSocket&>(*connection);
    ++counts[static_cast<std::size_t>(session.LoginState())];
    op.Loop().GiveWay();
  }
  writer.Begin("connections", "gauge", "Connections, by the state of their login.");
  for (std::size_t i = 0; i < counts.size(); ++i)
    writer.Labelled("state", kStates[i], counts[i]);
}

void AddPasses(Writer& writer, const PassTimes& times) {
  writer.Begin("pass_duration_seconds", "histogram",
               "How long the event loop was busy at a stretch, passes over the sockets included.");
  std::uint64_t count = 0;
  for (std::size_t i = 0; i < times.counts.size(); ++i) {
    count += times.counts[i];
    const bool isLast = i == PassTimes::kBounds.size();
    const std::string bound =
        isLast ? "+Inf"
               : Number(std::chrono::duration<double>(PassTimes::kBounds[isLast ? 0 : i]).count());
    writer.Add("_bucket", "le=\"" + bound + '"', std::to_string(count));
  }
  writer.Add("_sum", "", Number(std::chrono::duration<double>(times.sum).count()));
  writer.Add("_count", "", std::to_string(count));
}

}  // namespace

std::string MetricsText(Operator& op, const std::string& server) {
  const MapSocket& listener = op.Listener();
  const SessionContext& context = listener.Context;
  PollLoop& loop = op.Loop();
  Writer writer(server.empty() ? "" : Label("server", server));
  writer.Begin("info", "gauge", "The running version.");
  writer.Labelled("version", RunningVersion().FullVersion(), 1);
  writer.Gauge("listening", "Whether the server listens.", listener.IsListening() ? 1 : 0);
  AddEvents(writer, context.events);
  writer.Counter("reports_total", "Reports with a change, which are relayed.",
                 context.roster.Reports());
  writer.Counter("deliveries_total", "Relayed reports, each times its recipients.",
                 context.roster.Deliveries());
  writer.Counter("commands_total", "Messages that clients sent, of all commands.",
                 loop.Counts().messages);
  writer.Counter("received_bytes_total", "Bytes from clients.", loop.Counts().received);
  writer.Counter("sent_bytes_total", "Bytes to clients.", loop.Counts().sent);
  writer.Counter("lookups_total", "Requests to the location service.", context.locations.Lookups());
  writer.Counter("lookup_failures_total", "Requests to the location service without an answer.",
                 context.locations.FailedLookups());
  writer.Counter("database_faults_total", "Changes that the database refused.",
                 op.Database().Faults());
  writer.Counter("dropped_log_lines_total", "Lines that the log files did not take.",
                 op.Log().Dropped());
  AddConnections(writer, op);
  AddNetworks(writer, FiguresOf(op.Networks(), context.roster));
  writer.Gauge("output_held_bytes", "Output that clients have not taken yet.",
               loop.Memory().output.InUse());
  writer.Gauge("input_held_bytes", "Input that was not handled yet.", loop.Memory().input.InUse());
  writer.Gauge("resident_memory_bytes", "Memory that the process uses.", ProcessMemory());
  writer.Gauge("open_descriptors", "Descriptors that the process has open.", OpenDescriptors());
  writer.Gauge("accept_backlog", "Connections that wait to be accepted.",
               os::AcceptBacklog(listener.Handle()));
  AddPasses(writer, loop.Passes());
  return writer.Take();
}

}  // namespace corvane
