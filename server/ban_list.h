#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "buffers/block.h"
#include "net/connection_memory.h"
#include "server/server_networks.h"
#include "storage/bans.h"

namespace corvane {

// Whether the network's administrators see and lift the ban where the rules hide others: not if it
// ends, which only the operator's bans do.
bool IsOfAdmins(const Ban& ban, const ServerNetworks& network);

// The list of bans that an administrator asks for (command 13). Reads and formats it in portions,
// between which other sessions are served. Borrows the bans and the memory.
//
// Limits: fails if the output of all connections would exceed half of its limit.
class BanList {
 public:
  // Lists only the bans of the network's administrators, if one is given.
  BanList(Bans& bans, ConnectionMemory& memory, NetworkRef network = nullptr)
      : myBans(bans), myMemory(memory), myNetwork(std::move(network)) {}

  // Reads on for about a millisecond. Returns whether there is more to read.
  bool ReadOn();

  // The payload of the answer: empty if the query failed, none if there was no memory for it.
  std::optional<std::vector<SharedBytes>> Take();

 private:
  void ReadPortion();
  void Add(const Ban& ban);
  void StorePiece();

  Bans& myBans;
  ConnectionMemory& myMemory;
  NetworkRef myNetwork;
  std::int64_t myPlace = Bans::kBegin;
  std::vector<SharedBytes> myPieces;
  std::string myRecords;  // not in a piece yet
  bool myHasFailed = false;
};

}  // namespace corvane
