#pragma once

#include <cstddef>
#include <cstdint>
#include <future>
#include <string>
#include <utility>
#include <vector>

#include "framework/address_ranges.h"
#include "storage/ban.h"
#include "storage/ban_ranges.h"
#include "storage/database_record.h"

namespace corvane {

class DatabaseConnection;

// Stores a list of bans, and rows of other tables that belong to it, in one transaction, some per
// Step, so that the server goes on in between. Until it ends, the connection is reserved. Leaves
// out what is banned for ever or until the same time; of `bans`, those that an equal or longer one
// makes needless. Destroyed before its end, it leaves nothing behind. Borrows the connection.
class BanImport {
 public:
  struct List {
    std::vector<AddressRange> ranges;    // of IPv4; an address is one of a single address
    std::vector<std::string> addresses;  // of IPv6
    std::vector<Ban> bans;               // of addresses, each with reason, network and end
    std::vector<std::pair<std::string, DatabaseRecord>> rows;  // of other tables, by their names
  };

  // All have the terms of this ban: issuer, date and, but for `bans`, reason and end.
  BanImport(DatabaseConnection& connection, List list, Ban terms);
  ~BanImport();
  BanImport(const BanImport&) = delete;
  BanImport& operator=(const BanImport&) = delete;

  enum class Progress { More, Made, Failed };
  // Works for a few milliseconds. If it fails, the connection has the error.
  Progress Step();

  // What was stored; ranges of a single address are among the addresses.
  std::int64_t AddressCount() const { return myAddressCount; }
  std::vector<BanRange>& Ranges() { return myRanges; }

 private:
  bool Begin();
  // Flushes a long list to the disk, on a thread: the commit would take as long.
  bool IsSynced();
  bool StorePortion();
  bool StoreBan(const Ban& ban);
  // Counts the bans that were added since the last call, which end then.
  bool NoteAdded(const DatabaseValue& until);

  DatabaseConnection& myConnection;
  const List myList;
  const std::size_t mySize;
  const Ban myTerms;
  std::future<void> mySync;
  std::size_t myNext = 0;  // in the list, in the order of its fields
  bool myHasBegun = false;
  std::int64_t myLastBan = 0;
  std::int64_t myLastRange = 0;
  std::int64_t myAddressCount = 0;
  std::vector<BanRange> myRanges;
};

}  // namespace corvane
