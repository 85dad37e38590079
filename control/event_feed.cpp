#include "control/event_feed.h"

#include <iterator>
#include <utility>

#include <QDateTime>
#include <QJsonObject>

#include "control/answers.h"
#include "control/request.h"
#include "framework/text.h"

namespace corvane {
namespace {

constexpr int kMaxPerSecond = 1000;

QStringList KnownTypes() {
  QStringList types;
  for (std::size_t i = 0; i < static_cast<std::size_t>(ServerEvent::Kind::kCount); ++i) {
    const QString type = DisplayText(NameOf(static_cast<ServerEvent::Kind>(i)).type);
    if (!types.contains(type)) types.append(type);
  }
  return types;
}

// Pure ASCII, for readers of any encoding.
QByteArray AsciiLine(const QJsonObject& fields) {
  QByteArray line;
  for (const QChar c : QString::fromUtf8(Line(fields))) {
    const char16_t unit = c.unicode();
    line += unit < 0x7F ? QByteArray(1, static_cast<char>(unit))
                        : "\\u" + QByteArray::number(unit, 16).rightJustified(4, '0');
  }
  return line;
}

QJsonObject FieldsOf(const ServerEvent& event) {
  const EventName name = NameOf(event.kind);
  QJsonObject fields{{"time", QDateTime::currentDateTimeUtc().toString(Qt::ISODateWithMs)},
                     {"type", DisplayText(name.type)}};
  const std::pair<const char*, std::string_view> texts[] = {
      {"reason", name.reason},    {"user", event.user}, {"network", event.network},
      {"address", event.address}, {"by", event.by},     {"text", event.text}};
  for (const auto& [field, text] : texts) {
    if (!text.empty()) fields[QLatin1String(field)] = AnswerText(text);
  }
  return fields;
}

}  // namespace

EventFeed::EventFeed(ServerEvents& events)
    : myEvents(events.Happened.Connect([this](const ServerEvent& event) { Send(event); })) {}

void EventFeed::Follow(ControlConnection& client, const std::optional<std::string>& types) {
  const QStringList known = KnownTypes();
  QStringList wanted = types ? DisplayText(*types).split(',') : QStringList();
  for (QString& type : wanted) {
    type = type.trimmed();
    if (known.contains(type)) continue;
    throw Misused("there are no events of the type \"" + TextFromDisplay(type) +
                  "\"; expected some of: " + TextFromDisplay(known.join(", ")));
  }
  std::erase_if(myFollowers, [&](const Follower& follower) { return follower.client == &client; });
  myFollowers.push_back({&client, std::move(wanted)});
}

void EventFeed::Send(const ServerEvent& event) {
  std::erase_if(myFollowers, [](const Follower& follower) { return follower.client == nullptr; });
  if (myFollowers.empty()) return;
  const auto now = std::chrono::steady_clock::now();
  QJsonObject fields = FieldsOf(event);
  for (Follower& follower : myFollowers) {
    if (!follower.types.isEmpty() && !follower.types.contains(fields["type"].toString())) continue;
    if (now - follower.second >= std::chrono::seconds(1)) {
      follower.second = now;
      follower.sent = 0;
    }
    if (follower.client->IsBehind() || follower.sent == kMaxPerSecond) {
      ++follower.dropped;
      continue;
    }
    ++follower.sent;
    fields.remove("dropped");
    if (follower.dropped > 0) fields["dropped"] = std::exchange(follower.dropped, 0);
    follower.client->SendFollowed(AsciiLine(fields));
  }
}

}  // namespace corvane
