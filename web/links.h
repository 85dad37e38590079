#pragma once

#include <optional>
#include <vector>

#include <QByteArray>
#include <QDateTime>
#include <QLockFile>
#include <QString>

namespace corvane::web {

// A link to a network. Its token is a secret that only the URL has.
struct Link {
  int number = 0;
  QString network;  // the id
  QString label;
  QByteArray tokenHash;  // SHA-256
  QDateTime until{};     // UTC; invalid: it does not end

  bool HasEnded(const QDateTime& now) const { return until.isValid() && now >= until; }
};

// The links in a file of the data folder, which only its user can read. Each change reads the file,
// and replaces it as a whole, under a lock, so that the running server sees it.
class Links {
 public:
  explicit Links(const QString& dataFolder);

  // The links that have not ended, ascending. None if there is a file that cannot be read; Error()
  // says why.
  std::optional<std::vector<Link>> All();
  // Makes a link and returns its token: 128 random bits as 22 characters (RFC 4648, base64url).
  // None on failure.
  std::optional<QString> Add(const QString& network, const QString& label, const QDateTime& until);
  // Removes the links of that label, or the one with that number. Returns how many; none on
  // failure.
  std::optional<int> Revoke(const QString& labelOrNumber);
  const QString& Error() const { return myError; }

  static QByteArray HashOf(const QByteArray& token);

 private:
  bool Locks(QLockFile& lock);
  bool Write(const std::vector<Link>& links, int lastNumber);

  QString myFile;
  int myLastNumber = 0;
  QString myError;
};

}  // namespace corvane::web
