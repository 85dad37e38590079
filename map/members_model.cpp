#include "map/members_model.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include <QFont>
#include <QGuiApplication>
#include <QPalette>

#include "framework/visible_text.h"
#include "map/alarm_art.h"
#include "map/marker_board.h"

namespace corvane::map {
namespace {

using client::Clock;
using client::Member;

constexpr std::chrono::milliseconds kUpdateInterval{500};
// For as many removed rows, a reset costs less than their removal one by one.
constexpr std::size_t kResetThreshold = 50;

QFont Bold() {
  QFont bold;
  bold.setBold(true);
  return bold;
}

std::chrono::seconds Age(const Member& member) {
  return std::chrono::duration_cast<std::chrono::seconds>(Clock::now() - member.news);
}

}  // namespace

MembersModel::MembersModel(client::Members& members) : myMembers(members) {
  myMembers.Watch(*this);
  connect(&myTimer, &QTimer::timeout, this, [this] { Update(); });
  myTimer.start(kUpdateInterval);
}

MembersModel::~MembersModel() {
  myMembers.Unwatch(*this);
}

int MembersModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(myRows.size());
}

int MembersModel::columnCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : kColumns;
}

QVariant MembersModel::data(const QModelIndex& index, int role) const {
  const Row& row = myRows[static_cast<std::size_t>(index.row())];
  const int column = index.column();
  if (role == Qt::TextAlignmentRole) {
    const bool isNumber = column != kName && column != kState;
    return QVariant(Qt::AlignVCenter | (isNumber ? Qt::AlignRight : Qt::AlignLeft));
  }
  if (column == kName && IsOwn(index.row())) {
    if (role == Qt::FontRole) return Bold();
    if (role == Qt::ToolTipRole) return tr("You");
    if (role == Qt::AccessibleTextRole) return tr("%1 (you)").arg(row.name);
  }
  if (role == Qt::BackgroundRole || role == Qt::ForegroundRole || role == Qt::ToolTipRole) {
    const QString alarm =
        column == kState && row.member != nullptr ? AlarmOf(*row.member) : QString();
    if (role == Qt::ToolTipRole) return alarm.toHtmlEscaped();
    if (!alarm.isEmpty()) return role == Qt::BackgroundRole ? kAlarmGround : kAlarmText;
    if (role == Qt::ForegroundRole && !myMembers.IsCurrent()) {
      // Greyer than the others, and still readable: the disabled colour is not.
      QColor faint = QGuiApplication::palette().color(QPalette::Text);
      faint.setAlphaF(0.6F);
      return faint;
    }
    return {};
  }
  const bool sorts = role == kSortRole;
  if (role != Qt::DisplayRole && !sorts) return {};
  if (column == kName) return sorts ? row.folded : row.name;
  if (row.member == nullptr || (!row.member->hasPlace && column != kState)) return {};
  switch (column) {
    case kX:
      return row.member->report.x;
    case kY:
      return row.member->report.y;
    case kFacet:
      return row.member->report.facet;
    case kHp:
      return row.member->report.hp;
    case kState:
      if (sorts) return RankOf(*row.member);
      return AlarmOf(*row.member).isEmpty() ? PlainStateOf(*row.member) : AlarmOf(*row.member);
    default:
      if (sorts) return static_cast<qint64>(Age(*row.member).count());
      return NewsOf(*row.member);
  }
}

QVariant MembersModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal || role != Qt::DisplayRole) return {};
  const QString names[kColumns] = {tr("Name"), tr("X"),     tr("Y"),        tr("Facet"),
                                   tr("HP"),   tr("State"), tr("Last news")};
  return names[section];
}

QString MembersModel::AlarmOf(const Member& member) const {
  if (myAlarms == nullptr || !member.hasPlace) return {};
  return myAlarms->TextOf(&member == &myOwn ? nullptr : &member, member.report);
}

int MembersModel::RankOf(const Member& member) const {
  const int rank = 2 * int{!member.report.isDead} + int{!member.report.inBattle};
  if (!member.hasPlace) return 8;
  return AlarmOf(member).isEmpty() ? 4 + rank : rank;
}

QString MembersModel::PlainStateOf(const Member& member) {
  if (!member.hasPlace) return tr("No place");
  if (member.report.isDead) return tr("Dead");
  return member.report.inBattle ? tr("In battle") : tr("Alive");
}

QString MembersModel::NewsOf(const Member& member) {
  const auto seconds = Age(member).count();
  if (seconds < 60) return tr("%1 s ago").arg(seconds);
  if (seconds < 3600) return tr("%1 min ago").arg(seconds / 60);
  return tr("%1 h ago").arg(seconds / 3600);
}

int MembersModel::RowOf(const Member& member) const {
  const auto place = myPlaces.find(&member);
  return place == myPlaces.end() ? -1 : place->second;
}

void MembersModel::ShowOwn(const std::string& name, const std::optional<client::Report>& report) {
  if (name != myOwn.name) {
    if (!myOwn.name.empty()) Removed(myOwn);
    myOwn.name = name;
    if (!name.empty()) Added(myOwn);
  }
  myOwn.hasPlace = report.has_value();
  if (!report || *report == myOwn.report) return;
  myOwn.report = *report;
  myOwn.news = Clock::now();
}

void MembersModel::Update() {
  if (myGone > 0) RemoveGone();
  const int had = rowCount();
  // Leaves out the names, so that the list is not filtered and sorted by them again. Only their
  // colour changes.
  const bool isCurrent = myMembers.IsCurrent();
  const bool changesColour = std::exchange(myWasCurrent, isCurrent) != isCurrent;
  if (had > 0) Q_EMIT dataChanged(index(0, changesColour ? kName : kX), index(had - 1, kNews));
  if (myNew.empty()) return;
  beginInsertRows({}, had, had + static_cast<int>(myNew.size()) - 1);
  for (const Member* member : myNew) {
    const QString name = VisibleText(member->name, kMaxNameLength);
    myRows.push_back({member, name, VisibleText(member->name).toCaseFolded()});
  }
  myNew.clear();
  Number();
  endInsertRows();
}

void MembersModel::RemoveGone() {
  const auto isGone = [](const Row& row) { return row.member == nullptr; };
  if (std::exchange(myGone, 0) >= kResetThreshold) {
    beginResetModel();
    std::erase_if(myRows, isGone);
    Number();
    endResetModel();
    return;
  }
  for (int row = rowCount() - 1; row >= 0; --row) {
    if (MemberAt(row) != nullptr) continue;
    beginRemoveRows({}, row, row);
    myRows.erase(myRows.begin() + row);
    endRemoveRows();
  }
  Number();
}

void MembersModel::Number() {
  myPlaces.clear();
  for (int row = 0; row < rowCount(); ++row) {
    if (MemberAt(row) != nullptr) myPlaces.emplace(MemberAt(row), row);
  }
}

void MembersModel::Added(const Member& member) {
  myNew.push_back(&member);
}

// The next Update shows it.
void MembersModel::Changed(const Member&) {}

void MembersModel::Removed(const Member& member) {
  const auto place = myPlaces.find(&member);
  if (place == myPlaces.end()) {
    std::erase(myNew, &member);
    return;
  }
  myRows[static_cast<std::size_t>(place->second)].member = nullptr;
  myPlaces.erase(place);
  ++myGone;
}

}  // namespace corvane::map
