#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <QByteArray>

#include "client/members.h"

namespace corvane::map {

// A block is some seconds of a recording, readable without the blocks before it: its first frame
// has all members, each later one those that have changed. Times are milliseconds since 1970 (UTC).
//
//   head      length of the frames in bytes (32 bits), begin (64), duration in ms (32), members
//   (32),
//             checksum of the frames (16), checksum of the head before (16); big-endian
//   frame     milliseconds since the frame before, entries, 0
//   entry     2 (index + 1), plus 1 if the member has gone and the entry ends here. The next free
//             index is a new member: length and bytes of its name follow.
//             Flags; differences in x, y, and by the flags in facet and hit points; age of the news
//
// All numbers after the head are LEB128 varints, differences zigzag-encoded modulo 2^32.
struct BlockHead {
  static constexpr qint64 kBytes = 24;
  static constexpr quint32 kMaxLength = 8 << 20;
  static constexpr quint32 kMaxMembers = 25'000;
  static constexpr qint64 kMaxTime = qint64{1} << 42;  // in the year 2109

  quint32 length = 0;
  qint64 begin = 0;
  quint32 duration = 0;
  quint32 members = 0;
  quint16 checksum = 0;

  qint64 End() const { return begin + duration; }
  // None unless the bytes begin with a head within the limits.
  static std::optional<BlockHead> Read(const QByteArray& bytes);
  QByteArray Bytes() const;
};

// Builds a block.
class BlockWriter {
 public:
  explicit BlockWriter(qint64 begin) : myHead{.begin = begin} {}

  // `at` is in milliseconds since the block's begin.
  void BeginFrame(quint32 at);
  void EndFrame() { Put(0); }
  // The index Members() adds a new member.
  void Put(quint32 index, const client::Member& member, std::chrono::milliseconds age);
  void PutGone(quint32 index) { Put(2 * (quint64{index} + 1) + 1); }

  quint32 Members() const { return static_cast<quint32>(myReports.size()); }
  // Whether another frame might pass the limits.
  bool IsFull() const;
  // The whole block.
  QByteArray Finish(quint32 duration);

 private:
  void Put(quint64 number);

  BlockHead myHead;
  quint32 myLastFrame = 0;
  std::vector<client::Report> myReports;  // in each member's last entry
  QByteArray myBytes;
};

struct RecordedMember {
  std::string name;
  client::Report report;
  qint64 news = 0;
  bool hasPlace = false;
  bool isPresent = false;
};

// Reads a block frame by frame. The bytes may be anything.
class BlockReader {
 public:
  // `bytes` is the whole block.
  explicit BlockReader(QByteArray bytes);

  qint64 End() const { return myHead.End(); }
  // The time of the next frame; none after the last one and where the block is damaged.
  std::optional<qint64> NextFrame() const { return myNextFrame; }
  // Applies the next frame to Members(), and appends the indices of its entries to `changed`.
  void ReadFrame(std::vector<std::size_t>& changed);
  const std::vector<RecordedMember>& Members() const { return myMembers; }
  bool IsDamaged() const { return myIsDamaged; }

 private:
  void FindFrame();
  void ReadEntry(RecordedMember& member);
  quint64 Take();
  void TakeDifference(std::int32_t& number);
  void Damage();

  QByteArray myBytes;
  BlockHead myHead;
  qsizetype myAt = BlockHead::kBytes;
  qint64 myTime = 0;
  std::optional<qint64> myNextFrame;
  std::vector<RecordedMember> myMembers;
  bool myIsDamaged = false;
};

}  // namespace corvane::map
