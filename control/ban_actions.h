#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <QByteArray>
#include <QDateTime>

#include "control/request.h"
#include "framework/address_ranges.h"

namespace corvane {

class Operator;

// When a ban ends whose request has the field "for", such as "2d"; invalid without one. Throws
// Misused.
QDateTime EndOf(const Request& request, const Operator& op);
// The answer to a ban, with its end and a warning if it is not stored yet.
QByteArray BannedLine(const Operator& op, const std::string& text, const QDateTime& until,
                      bool isStored);

// The commands of the local socket for banned ranges and for lists of bans. Otherwise as Actions.
//
// Limits: a list that is being imported has at most 4 million entries, 32 MiB; another import
// drops it.
class BanActions {
 public:
  explicit BanActions(Operator& op) : myOperator(op) {}

  QByteArray BanRange(const Request& request);
  QByteArray UnbanRange(const Request& request);
  // Takes a portion of a list, or stores the whole list in one transaction.
  QByteArray Import(const Request& request);
  // All bans in the form of a list.
  QByteArray Export(const Request& request);

 private:
  void TakeLine(std::string_view line, bool isForced);
  QByteArray StoreImport(const Request& request);

  Operator& myOperator;
  int myImport = 0;  // the number of the current import
  std::vector<AddressRange> myEntries;
  int myLines = 0;
  int mySkipped = 0;
};

}  // namespace corvane
