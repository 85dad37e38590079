#include "web/links.h"

#include <algorithm>
#include <functional>

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRandomGenerator>
#include <QSaveFile>
#include <QThread>

namespace corvane::web {
namespace {

constexpr int kTokenWords = 4;  // of 32 bits
constexpr qint64 kMaxFile = qint64{16} << 20;
constexpr int kLockPatience = 5000;  // ms

// On Windows a file cannot be replaced while another program reads it, nor read while it is
// replaced.
constexpr int kAttempts = 5;
constexpr int kPause = 20;  // ms

bool SucceedsInTime(const std::function<bool()>& attempt) {
  for (int i = 1; i < kAttempts; ++i) {
    if (attempt()) return true;
    QThread::msleep(kPause);
  }
  return attempt();
}

constexpr auto kBase64 = QByteArray::Base64UrlEncoding | QByteArray::OmitTrailingEquals;

}  // namespace

Links::Links(const QString& dataFolder) : myFile(QDir(dataFolder).absoluteFilePath("links.json")) {}

QByteArray Links::HashOf(const QByteArray& token) {
  return QCryptographicHash::hash(token, QCryptographicHash::Sha256);
}

std::optional<std::vector<Link>> Links::All() {
  std::vector<Link> links;
  QFile file(myFile);
  if (!file.exists()) return links;
  if (!SucceedsInTime([&] { return file.open(QIODevice::ReadOnly); })) {
    myError = myFile + ": " + file.errorString();
    return std::nullopt;
  }
  const QJsonDocument document = QJsonDocument::fromJson(file.read(kMaxFile));
  if (!document["links"].isArray()) {
    myError = myFile + ": not a list of links";
    return std::nullopt;
  }
  myLastNumber = document["lastNumber"].toInt();
  const QDateTime now = QDateTime::currentDateTimeUtc();
  for (const QJsonValue entry : document["links"].toArray()) {
    Link link{entry["number"].toInt(), entry["network"].toString(), entry["label"].toString(),
              QByteArray::fromHex(entry["sha256"].toString().toLatin1()),
              QDateTime::fromString(entry["until"].toString(), Qt::ISODate)};
    const bool isWhole = link.number > 0 && !link.tokenHash.isEmpty() &&
                         link.until.isValid() == entry.toObject().contains("until");
    if (!isWhole) {
      myError = myFile + ": a link is damaged";
      return std::nullopt;
    }
    if (!link.HasEnded(now)) links.push_back(std::move(link));
  }
  return links;
}

bool Links::Locks(QLockFile& lock) {
  if (!lock.tryLock(kLockPatience)) {
    myError = myFile + ": another program changes it, or its folder cannot be written to";
    return false;
  }
  // A file of the administrator's could not be read by the service, and ends all links.
  const QFileInfo folder(QFileInfo(myFile).path());
  if (QFileInfo(lock.fileName()).ownerId() == folder.ownerId()) return true;
  myError = folder.filePath() + ": belongs to " + folder.owner() + ", who alone may change links";
  return false;
}

std::optional<QString> Links::Add(const QString& network, const QString& label,
                                  const QDateTime& until) {
  QLockFile lock(myFile + ".lock");
  if (!Locks(lock)) return std::nullopt;
  auto links = All();
  if (!links) return std::nullopt;
  quint32 words[kTokenWords];
  QRandomGenerator::system()->fillRange(words);
  const QByteArray token =
      QByteArray(reinterpret_cast<const char*>(words), sizeof words).toBase64(kBase64);
  links->push_back({myLastNumber + 1, network, label, HashOf(token), until});
  if (!Write(*links, myLastNumber + 1)) return std::nullopt;
  return QString::fromLatin1(token);
}

std::optional<int> Links::Revoke(const QString& labelOrNumber) {
  QLockFile lock(myFile + ".lock");
  if (!Locks(lock)) return std::nullopt;
  auto links = All();
  if (!links) return std::nullopt;
  const auto removed = std::erase_if(*links, [&](const Link& link) {
    return link.label == labelOrNumber || QString::number(link.number) == labelOrNumber;
  });
  if (removed > 0 && !Write(*links, myLastNumber)) return std::nullopt;
  return static_cast<int>(removed);
}

bool Links::Write(const std::vector<Link>& links, int lastNumber) {
  QJsonArray entries;
  for (const Link& link : links) {
    QJsonObject entry{{"number", link.number},
                      {"network", link.network},
                      {"label", link.label},
                      {"sha256", QString::fromLatin1(link.tokenHash.toHex())}};
    if (link.until.isValid()) entry["until"] = link.until.toUTC().toString(Qt::ISODate);
    entries.append(entry);
  }
  const QJsonDocument document(QJsonObject{{"lastNumber", lastNumber}, {"links", entries}});
  return SucceedsInTime([&] {
    QSaveFile file(myFile);
    const bool isWritten = file.open(QIODevice::WriteOnly) &&
                           file.setPermissions(QFile::ReadOwner | QFile::WriteOwner) &&
                           file.write(document.toJson()) > 0 && file.commit();
    if (!isWritten) myError = myFile + ": " + file.errorString();
    return isWritten;
  });
}

}  // namespace corvane::web
