#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "buffers/block.h"

namespace corvane {

class ClientSocket;

// Collects the reports for the members of one network and delivers them to each member in one
// piece, so a delivery visits a member once, not once per report. Each member gets the same bytes
// in the same order as if every report were sent by itself, provided that the owner delivers before
// anything else is sent to a member and before the members change. Borrows the pool.
class Outbox {
 public:
  using Members = std::vector<std::shared_ptr<ClientSocket>>;

  explicit Outbox(BufferPool& pool) : myWriter(pool) {}

  bool IsEmpty() const { return myPackets.empty(); }
  std::size_t Size() const { return myBytes.size(); }

  // Adds a packet for every member whose name differs from the sender's.
  void Add(const std::shared_ptr<ClientSocket>& sender, std::string_view packet);

  // Writes the packets to the members, which must be in hand-off order, and empties the outbox. If
  // most of the members that read are behind, senders of many bytes wait for them
  // (ClientSocket::AwaitReaders). If memory runs out, the senders fail. Returns the number of
  // packets times their recipients.
  std::uint64_t Deliver(const Members& members);

  // Whether most of the members that read are behind. Examines the members again at most every 10
  // ms or 256 KiB, and otherwise returns the last result.
  bool AreMostBehind(const Members& members);

 private:
  struct Packet {
    std::shared_ptr<ClientSocket> sender;
    std::size_t end = 0;  // its offset in myBytes
  };

  // As Deliver; none if there is no memory.
  std::optional<std::uint64_t> DeliverTo(const Members& members);
  // The senders of the packets in hand-off order; some may be there twice.
  std::vector<const ClientSocket*> Senders() const;
  // Makes senders wait if many of their bytes were relayed since they last had to.
  void HoldSenders() const;
  // Returns how many packets are others'.
  std::size_t SendOthers(ClientSocket& member, const SharedBytes& all) const;
  void Clear();

  std::string myBytes;
  std::vector<Packet> myPackets;
  // Whether a sender may share its name with another member: then names are compared, not sessions.
  bool myIsNameShared = false;
  std::size_t mySinceLook = 0;  // bytes delivered since the last look at the members
  std::chrono::steady_clock::time_point myNextLook;
  bool myAreMostBehind = false;  // at the last look
  BlockWriter myWriter;          // of the bytes that all members share
};

}  // namespace corvane
