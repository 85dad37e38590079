#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <set>
#include <string>
#include <vector>

#include <QString>

#include "storage/ban.h"

namespace corvane {

// The bans that wait for the database, in memory and in a file of this name beside the
// database, which the next start reads. Each line of the file is a ban: address, by, reason, date,
// network and, if it ends, when, percent-encoded and separated by tabs.
//
// Each waiting ban has a number from kFirstNumber on. The number remains valid after the ban is
// stored, until the server ends.
//
// Limits: above 16 MiB a ban is kept without its reason, and is dropped if one of its address waits
// that lasts as long. Each ban that has waited leaves 8 bytes in memory.
class WaitingBans {
 public:
  static constexpr std::int64_t kFirstNumber = 2'000'000'000;

  // Reads the file. Skips an incomplete line: that ban was not announced yet. Without a database
  // there is no file.
  WaitingBans(const QString& databaseFile, const QString& name);

  // In the order of storing.
  const std::deque<Ban>& All() const { return myBans; }
  // Whether one names the address and holds at that time.
  bool Has(const std::string& address, const QDateTime& time) const;

  // Numbers the ban and keeps it. On return it is on the disk, unless writing fails.
  void Add(Ban ban);

  // Removes the first ban, which is now in the database under the number `id`.
  void FirstIsStored(std::int64_t id);
  // Moves the first ban, which the database refused, to the end.
  void FirstIsRefused();
  // The number in the database of the ban with this number; any other number is returned unchanged.
  std::int64_t StoredAs(std::int64_t number) const;

  // Removes the waiting bans with these numbers and takes their numbers out of the set. Returns
  // false if the file cannot be written; the bans remain then.
  [[nodiscard]] bool Remove(std::set<std::int64_t>& numbers);

  // Rewrites the file without stored bans, unless it is too large to write at once. If the server
  // is killed before, those bans are stored twice.
  void TidyFile();
  // Rewrites the file. Returns whether it holds all waiting bans.
  bool Save();

 private:
  void Enter(Ban ban);
  std::size_t Bytes() const;
  // These return whether the bans are on the disk. Without bans the file is removed.
  bool Append(const Ban& ban) const;
  bool Write(const std::deque<Ban>& bans) const;

  QString myFile;
  bool myIsFileWhole = true;
  std::deque<Ban> myBans;
  std::vector<std::int64_t> myStoredAs;  // by number, from kFirstNumber on
};

}  // namespace corvane
