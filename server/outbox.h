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

// Reports on their way to the members of one network. They are gathered while passes over the
// sockets run and delivered to each member in one piece before the flush, so that a member is
// visited once and not once per report: every member gets the same bytes in the same order as if
// each report had been sent by itself, as long as nothing else is sent to a member, and nobody
// becomes or ceases to be one, before what was gathered is delivered.
class Outbox {
 public:
  using Members = std::vector<std::shared_ptr<ClientSocket>>;

  explicit Outbox(BufferPool& pool) : myWriter(pool) {}

  bool IsEmpty() const { return myPackets.empty(); }
  std::size_t Size() const { return myBytes.size(); }

  // One more packet, for every member who has another name than the sender.
  void Add(const std::shared_ptr<ClientSocket>& sender, std::string_view packet);

  // Writes the packets to the members, who are in hand-off order; empty afterwards. Where most of
  // those who read are behind, senders of much wait for them (ClientSocket::AwaitReaders).
  void Deliver(const Members& members);

  // Whether most of a member's recipients read and are behind. Looks at them once in a while.
  bool AreMostBehind(const Members& members);

 private:
  struct Packet {
    std::shared_ptr<ClientSocket> sender;
    std::size_t end = 0;  // in the bytes
  };

  // False where there is no memory for it.
  bool DeliverTo(const Members& members);
  // `all` are the bytes of all packets.
  void DeliverTo(const Members& members, const Slice& all) const;
  // Those who sent some of the packets, in hand-off order; some may be there twice.
  std::vector<const ClientSocket*> Senders() const;
  // Holds the senders of much, counted since their last hold.
  void HoldSenders() const;
  void SendOthers(ClientSocket& member, const Slice& all) const;
  void Clear();

  std::string myBytes;
  std::vector<Packet> myPackets;
  // Whether others may have a sender's name: then names are compared and not sessions.
  bool myIsNameShared = false;
  std::size_t mySinceLook = 0;  // bytes delivered since somebody looked at how members read
  std::chrono::steady_clock::time_point myNextLook;
  bool myAreMostBehind = false;  // at the last look
  BlockWriter myWriter;          // of what the members are given: one copy for all
};

}  // namespace corvane
