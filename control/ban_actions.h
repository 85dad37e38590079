#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include <QByteArray>
#include <QDateTime>

#include "control/request.h"
#include "storage/ban_import.h"

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
// Limits: a list that is being imported has at most 4 million entries, 32 MiB, with each IPv6
// address for ten; another import drops it.
class BanActions {
 public:
  explicit BanActions(Operator& op) : myOperator(op) {}

  QByteArray BanRange(const Request& request);
  QByteArray UnbanRange(const Request& request);
  // Takes a portion of a list, or has the whole list stored in one transaction. Then it returns
  // nothing and calls `answer` later.
  QByteArray Import(const Request& request, std::function<void(const QByteArray&)> answer);
  // All bans in the form of a list, what no client has as a comment.
  QByteArray Export(const Request& request);

 private:
  void TakeLine(std::string_view line, bool isForced);

  Operator& myOperator;
  int myImport = 0;  // the number of the current import
  BanImport::List myList;
  int myLines = 0;
  int mySkipped = 0;
};

}  // namespace corvane
