#include "map/member_news.h"

#include <chrono>
#include <utility>

#include "framework/visible_text.h"

namespace corvane::map {
namespace {

constexpr std::chrono::seconds kNewsInterval{1};
constexpr qsizetype kNamesInALine = 5;
constexpr std::size_t kNewsNameLength = 40;

// The first names.
QString Names(const std::set<std::string>& names) {
  QStringList shown;
  for (const std::string& name : names) {
    shown.append(shown.size() < kNamesInALine ? VisibleText(name, kNewsNameLength)
                                              : QStringLiteral("..."));
    if (shown.size() > kNamesInALine) break;
  }
  return shown.join(QStringLiteral(", "));
}

}  // namespace

MemberNews::MemberNews(client::Members& members, MessagesPane& messages)
    : myMembers(members), myMessages(messages) {
  myMembers.Watch(*this);
  myTimer.setSingleShot(true);
  QObject::connect(&myTimer, &QTimer::timeout, &myTimer, [this] { Write(); });
}

MemberNews::~MemberNews() {
  myMembers.Unwatch(*this);
}

void MemberNews::Added(const client::Member& member) {
  Note(member, myCame, myLeft);
}

void MemberNews::Removed(const client::Member& member) {
  Note(member, myLeft, myCame);
}

void MemberNews::Note(const client::Member& member, std::set<std::string>& names,
                      std::set<std::string>& opposite) {
  if (!myMembers.IsCurrent()) return;
  if (opposite.erase(member.name) == 0) names.insert(member.name);
  if (!myTimer.isActive()) myTimer.start(kNewsInterval);
}

void MemberNews::Write() {
  const auto came = std::exchange(myCame, {});
  const auto left = std::exchange(myLeft, {});
  if (came.size() == 1) myMessages.Add(tr("%1 came.").arg(Names(came)));
  if (came.size() > 1) myMessages.Add(tr("%1 members came: %2").arg(came.size()).arg(Names(came)));
  if (left.size() == 1) myMessages.Add(tr("%1 left.").arg(Names(left)));
  if (left.size() > 1) myMessages.Add(tr("%1 members left: %2").arg(left.size()).arg(Names(left)));
}

}  // namespace corvane::map
