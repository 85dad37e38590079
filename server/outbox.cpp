#include "server/outbox.h"

#include "server/client_socket.h"

namespace corvane {
namespace {

constexpr std::size_t kMostKept = std::size_t{256} << 10;  // bytes, for the next reports

}  // namespace

void Outbox::Add(const std::shared_ptr<ClientSocket>& sender, std::string_view packet) {
  myBytes += packet;
  myPackets.push_back({sender, myBytes.size()});
  sender->SetGathered(true);
  // Only the empty name, and that of a session which has lost its listener, can be had twice.
  if (sender->Username().empty() || sender->HandOffNumber() == 0) myIsNameShared = true;
}

void Outbox::HandOver(const Members& members) {
  const Slice all = myWriter.Append(myBytes);
  for (const std::shared_ptr<ClientSocket>& member : members) {
    if (member->IsGathered() || myIsNameShared) {
      WriteToSender(*member, all);
    } else {
      member->WriteGathered(all);
    }
  }
  for (const Packet& packet : myPackets)
    packet.sender->SetGathered(false);
  if (myBytes.capacity() > kMostKept) myBytes = {};
  if (myPackets.capacity() * sizeof(Packet) > kMostKept) myPackets = {};
  myBytes.clear();
  myPackets.clear();
  myIsNameShared = false;
}

void Outbox::WriteToSender(ClientSocket& member, const Slice& all) const {
  std::size_t begin = 0;  // of what was not written yet
  std::size_t end = 0;    // of the packet before
  for (const Packet& packet : myPackets) {
    // By name, not by session: two of one name never see each other, on purpose.
    const bool isOwn =
        packet.sender.get() == &member ||
        (myIsNameShared && packet.sender->FoldedUsername() == member.FoldedUsername());
    if (isOwn) {
      member.WriteGathered(all.Part(begin, end - begin));
      begin = packet.end;
    }
    end = packet.end;
  }
  member.WriteGathered(all.Part(begin, all.Size() - begin));
}

}  // namespace corvane
