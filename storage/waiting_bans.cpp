#include "storage/waiting_bans.h"

#include <QFile>
#include <QFileInfo>

#include "framework/dates.h"
#include "framework/disk_sync.h"
#include "framework/replace_file.h"

namespace corvane {
namespace {

constexpr qsizetype kFields = 5;

QByteArray LineOf(const BansTable::Ban& ban) {
  QByteArray line;
  for (const std::string& field :
       {ban.address, ban.by, ban.reason, StoredDate(ban.bandate), ban.network})
    line += QByteArray::fromStdString(field).toPercentEncoding(" :") + '\t';
  line.back() = '\n';
  return line;
}

}  // namespace

WaitingBans::WaitingBans(const QString& databaseFile) {
  if (databaseFile.isEmpty()) return;
  myFile = QFileInfo(databaseFile).absolutePath() + QStringLiteral("/corvane-bans.waiting");
}

std::deque<BansTable::Ban> WaitingBans::Read() const {
  std::deque<BansTable::Ban> bans;
  QFile file(myFile);
  if (!QFileInfo(myFile).isFile() || !file.open(QIODevice::ReadOnly)) return bans;
  while (!file.atEnd()) {
    QList<QByteArray> fields = file.readLine().split('\t');
    // A line that was cut off has no end.
    if (fields.size() != kFields || !fields.back().endsWith('\n')) continue;
    fields.back().chop(1);
    const auto text = [&fields](qsizetype field) {
      return QByteArray::fromPercentEncoding(fields[field]).toStdString();
    };
    bans.push_back({0, text(0), text(1), text(2), DateFromStored(text(3)), text(4)});
  }
  return bans;
}

bool WaitingBans::Append(const BansTable::Ban& ban) const {
  QFile file(myFile);
  // The line before may have been cut off.
  const QByteArray lines = '\n' + LineOf(ban);
  return !myFile.isEmpty() &&
         file.open(QIODevice::Append, QFileDevice::ReadOwner | QFileDevice::WriteOwner) &&
         file.write(lines) == lines.size() && SyncToDisk(file);
}

bool WaitingBans::Replace(const std::deque<BansTable::Ban>& bans) const {
  if (bans.empty()) return !QFileInfo::exists(myFile) || QFile::remove(myFile);
  QByteArray lines;
  for (const BansTable::Ban& ban : bans)
    lines += LineOf(ban);
  return !myFile.isEmpty() && ReplaceFile(myFile, lines).isEmpty();
}

}  // namespace corvane
