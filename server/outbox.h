#pragma once

#include <chrono>
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "buffers/block.h"

namespace corvane {

class ClientSocket;

// Reports on their way to the members of one network: gathered while passes over the sockets run,
// and delivered to each member in one piece before the flush, so a member is visited once and not
// once per report. Each member gets the same bytes in the same order as if each report were sent by
// itself. The owner sees to that: it delivers before anything else is sent to a member and before
// the members change.
class Outbox {
 public:
  using Members = std::vector<std::shared_ptr<ClientSocket>>;

  explicit Outbox(BufferPool& pool) : myWriter(pool) {}

  bool IsEmpty() const { return myPackets.empty(); }
  std::size_t Size() const { return myBytes.size(); }

  // Adds a packet for every member whose name differs from the sender's.
  void Add(const std::shared_ptr<ClientSocket>& sender, std::string_view packet);

  // Writes the packets to the members, which are in hand-off order; empty afterwards. If most of
  // the members that read are behind, the senders of many bytes wait for them
  // (ClientSocket::AwaitReaders). If memory runs out, the senders fail.
  void Deliver(const Members& members);

  // Whether most of the members that read are behind. Examines them at most every 10 ms or 256 KiB.
  bool AreMostBehind(const Members& members);

 private:
  struct Packet {
    std::shared_ptr<ClientSocket> sender;
    std::size_t end = 0;  // its offset in myBytes
  };

  // False if there is no memory.
  bool DeliverTo(const Members& members);
  // The senders of the packets in hand-off order; some may be there twice.
  std::vector<const ClientSocket*> Senders() const;
  // Makes senders wait if many of their bytes were relayed since they last had to.
  void HoldSenders() const;
  void SendOthers(ClientSocket& member, const SharedBytes& all) const;
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
