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

// The bans that wait for the database: in memory, and in the file "corvane-bans.waiting" beside the
// database, which the next start reads. There a ban is a line: address, by, reason, date and
// network, percent-encoded, with tabs between.
//
// A ban that waits has a number from kFirstNumber on, by which it is found also when it was stored,
// until the server ends.
//
// Limits: above 16 MiB a ban waits without its reason, and none of an address that waits already.
// Of each ban that has waited eight bytes are kept.
class WaitingBans {
 public:
  static constexpr std::int64_t kFirstNumber = 2'000'000'000;

  // Reads the file; a line that is no whole ban is left out, since nobody was told of that one.
  // Where there is no database, there is no file either.
  explicit WaitingBans(const QString& databaseFile);

  // In the order in which they are to be stored.
  const std::deque<Ban>& All() const { return myBans; }
  bool Has(const std::string& address) const;

  // Gives the ban its number. On return it is on the disk, unless the disk refuses it.
  void Add(Ban ban);

  // The first was stored under this number; or was refused, and becomes the last.
  void FirstIsStored(std::int64_t id);
  void FirstIsRefused();
  // The number in the database of the ban that was listed under this one.
  std::int64_t StoredAs(std::int64_t number) const;

  // Removes those with these numbers, and their numbers from the set. When the disk refuses that it
  // removes none and returns false.
  [[nodiscard]] bool Remove(std::set<std::int64_t>& numbers);

  // Has the file hold what waits and nothing else, unless writing so much takes long. A ban that is
  // in both places when the server is killed is stored twice.
  void TidyFile();
  // Writes the file again. Returns whether all that waits is in it.
  bool Save();

 private:
  void Enter(Ban ban);
  std::size_t Bytes() const;
  // These return whether it is on the disk. Without bans there is no file.
  bool Append(const Ban& ban) const;
  bool Write(const std::deque<Ban>& bans) const;

  QString myFile;
  bool myIsFileWhole = true;
  std::deque<Ban> myBans;
  std::vector<std::int64_t> myStoredAs;  // by the numbers given here
};

}  // namespace corvane
