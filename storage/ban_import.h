#pragma once

#include <cstddef>
#include <cstdint>
#include <future>
#include <string>
#include <vector>

#include "framework/address_ranges.h"
#include "storage/ban.h"
#include "storage/ban_ranges.h"

namespace corvane {

class DatabaseConnection;

// Stores a list of bans in one transaction, some per Step, so that the server goes on in between.
// Until it ends, the connection is reserved. Leaves out what is banned for ever or until the same
// time. Destroyed before its end, it leaves nothing behind. Borrows the connection.
class BanImport {
 public:
  struct List {
    std::vector<AddressRange> ranges;    // of IPv4; an address is one of a single address
    std::vector<std::string> addresses;  // of IPv6
  };

  // All have the terms of this ban: issuer, reason, date and end.
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

  DatabaseConnection& myConnection;
  const List myList;
  const Ban myTerms;
  std::future<void> mySync;
  std::size_t myNext = 0;  // in the list, addresses last
  bool myHasBegun = false;
  std::int64_t myLastBan = 0;
  std::int64_t myLastRange = 0;
  std::int64_t myAddressCount = 0;
  std::vector<BanRange> myRanges;
};

}  // namespace corvane
