#include "storage/waiting_bans.h"

#include <algorithm>
#include <numeric>
#include <utility>

#include <QFile>
#include <QFileInfo>

#include "framework/dates.h"
#include "platform/disk_sync.h"
#include "storage/replace_file.h"

namespace corvane {
namespace {

constexpr qsizetype kFields = 5;  // of a ban that never ends
constexpr std::size_t kMaxTidiedBytes = std::size_t{64} << 10;
// An administrator may issue any number of bans, with long reasons.
constexpr std::size_t kMaxWaitingBytes = std::size_t{16} << 20;

std::size_t SizeOf(const Ban& ban) {
  return sizeof(ban) + ban.address.size() + ban.by.size() + ban.reason.size() + ban.network.size();
}

QByteArray LineOf(const Ban& ban) {
  QByteArray line;
  for (const std::string& field :
       {ban.address, ban.by, ban.reason, StoredDate(ban.bandate), ban.network})
    line += QByteArray::fromStdString(field).toPercentEncoding(" :") + '\t';
  if (ban.until.isValid()) line += QByteArray::fromStdString(StoredUtc(ban.until)) + '\t';
  line.back() = '\n';
  return line;
}

}  // namespace

WaitingBans::WaitingBans(const QString& databaseFile, const QString& name) {
  if (databaseFile.isEmpty()) return;
  myFile = QFileInfo(databaseFile).absolutePath() + '/' + name;
  QFile file(myFile);
  if (!QFileInfo(myFile).isFile() || !file.open(QIODevice::ReadOnly)) return;
  while (!file.atEnd()) {
    QList<QByteArray> fields = file.readLine().split('\t');
    // A truncated line has no line end.
    const bool ends = fields.size() == kFields + 1;
    if ((fields.size() != kFields && !ends) || !fields.back().endsWith('\n')) continue;
    fields.back().chop(1);
    const auto text = [&fields](qsizetype field) {
      return QByteArray::fromPercentEncoding(fields[field]).toStdString();
    };
    Enter({0, text(0), text(1), text(2), DateFromStored(text(3)), text(4),
           ends ? UtcFromStored(text(kFields)) : QDateTime()});
  }
}

bool WaitingBans::Has(const std::string& address, const QDateTime& time) const {
  return std::ranges::any_of(
      myBans, [&](const Ban& ban) { return ban.address == address && !ban.HasEnded(time); });
}

void WaitingBans::Add(Ban ban) {
  if (Bytes() + SizeOf(ban) > kMaxWaitingBytes) {
    // Only the address matters, and there are no more addresses than clients.
    const auto lastsAsLong = [&ban](const Ban& other) {
      return other.address == ban.address &&
             (!other.until.isValid() || (ban.until.isValid() && other.until >= ban.until));
    };
    if (std::ranges::any_of(myBans, lastsAsLong)) return;
    ban.reason.clear();
  }
  myIsFileWhole = Append(ban) && myIsFileWhole;
  Enter(std::move(ban));
}

void WaitingBans::Enter(Ban ban) {
  ban.id = kFirstNumber + std::ssize(myStoredAs);
  myStoredAs.push_back(ban.id);
  myBans.push_back(std::move(ban));
}

std::size_t WaitingBans::Bytes() const {
  const auto add = [](std::size_t sum, const Ban& ban) { return sum + SizeOf(ban); };
  return std::accumulate(myBans.begin(), myBans.end(), std::size_t{0}, add);
}

void WaitingBans::FirstIsStored(std::int64_t id) {
  myStoredAs[static_cast<std::size_t>(myBans.front().id - kFirstNumber)] = id;
  myBans.pop_front();
}

void WaitingBans::FirstIsRefused() {
  std::rotate(myBans.begin(), myBans.begin() + 1, myBans.end());
}

std::int64_t WaitingBans::StoredAs(std::int64_t number) const {
  if (number < kFirstNumber || number - kFirstNumber >= std::ssize(myStoredAs)) return number;
  return myStoredAs[static_cast<std::size_t>(number - kFirstNumber)];
}

bool WaitingBans::Remove(std::set<std::int64_t>& numbers) {
  std::deque<Ban> left = myBans;
  const auto isOne = [&numbers](const Ban& ban) { return numbers.erase(ban.id) > 0; };
  if (std::erase_if(left, isOne) == 0) return true;
  if (!Write(left)) return false;
  myIsFileWhole = true;
  myBans = std::move(left);
  return true;
}

void WaitingBans::TidyFile() {
  if (Bytes() < kMaxTidiedBytes) Save();
}

bool WaitingBans::Save() {
  myIsFileWhole = Write(myBans) || myIsFileWhole;
  return myIsFileWhole;
}

bool WaitingBans::Append(const Ban& ban) const {
  QFile file(myFile);
  // The previous line may be truncated.
  const QByteArray lines = '\n' + LineOf(ban);
  return !myFile.isEmpty() &&
         file.open(QIODevice::Append, QFileDevice::ReadOwner | QFileDevice::WriteOwner) &&
         file.write(lines) == lines.size() && SyncToDisk(file);
}

bool WaitingBans::Write(const std::deque<Ban>& bans) const {
  if (bans.empty()) return !QFileInfo::exists(myFile) || QFile::remove(myFile);
  QByteArray lines;
  for (const Ban& ban : bans)
    lines += LineOf(ban);
  return !myFile.isEmpty() && ReplaceFile(myFile, lines).isEmpty();
}

}  // namespace corvane
