#pragma once

#include <deque>

#include <QString>

#include "storage/bans_table.h"

namespace corvane {

// The bans that wait for the database, in the file "corvane-bans.waiting" beside it, which the next
// start reads. A ban is a line: address, by, reason, date and network, percent-encoded, with tabs
// between.
class WaitingBans {
 public:
  // Where there is no database, there is no file either: nothing is read or written.
  explicit WaitingBans(const QString& databaseFile);

  // What the file holds. A line that is no whole ban is left out: nobody was told of that one.
  std::deque<BansTable::Ban> Read() const;

  // These return whether it is on the disk. Without bans there is no file.
  bool Append(const BansTable::Ban& ban) const;
  bool Replace(const std::deque<BansTable::Ban>& bans) const;

 private:
  QString myFile;
};

}  // namespace corvane
