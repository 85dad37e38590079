#include "server/ban_list.h"

#include <chrono>
#include <utility>

#include "buffers/output_queue.h"
#include "framework/dates.h"
#include "framework/text.h"
#include "platform/processor_time.h"

namespace corvane {
namespace {

constexpr std::chrono::milliseconds kReadingTime{1};

}  // namespace

bool IsOfAdmins(const Ban& ban, const ServerNetworks& network) {
  return SameText(ban.network, network.NetworkName) && !ban.until.isValid();
}

bool BanList::ReadOn() {
  const auto end = ProcessorTime() + kReadingTime;
  while (myPlace != Bans::kEnd && ProcessorTime() < end)
    ReadPortion();
  return myPlace != Bans::kEnd;
}

void BanList::ReadPortion() {
  const auto bans = myBans.Portion(myPlace);
  if (!bans) {
    myPieces.clear();
    myRecords.clear();
  } else {
    for (const Ban& ban : *bans)
      Add(ban);
  }
  // Pieces of this size do not count towards the connection's backlog.
  if (myRecords.size() >= OutputQueue::kLarge) StorePiece();
  if (myHasFailed) myPlace = Bans::kEnd;
}

void BanList::Add(const Ban& ban) {
  if (myNetwork != nullptr && !IsOfAdmins(ban, *myNetwork)) return;
  myRecords += std::to_string(ban.id) + "|" + ban.address + "|" + ban.by + "|" + ban.reason + "|" +
               ShortDateAndTime(ban.bandate);
  myRecords += '\0';
}

void BanList::StorePiece() {
  // The other half stays free for smaller output.
  const bool hasRoom = myMemory.output.InUse() + myRecords.size() <= myMemory.limits.output / 2;
  const SharedBytes piece = hasRoom ? CopyToBlock(myMemory.output, myRecords) : SharedBytes();
  myHasFailed = piece.Size() == 0;
  if (!myHasFailed) myPieces.push_back(piece);
  myRecords.clear();
}

std::optional<std::vector<SharedBytes>> BanList::Take() {
  if (!myRecords.empty()) StorePiece();
  if (myHasFailed) return std::nullopt;
  return std::move(myPieces);
}

}  // namespace corvane
