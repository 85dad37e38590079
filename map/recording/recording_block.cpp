#include "map/recording/recording_block.h"

#include <algorithm>
#include <utility>

#include <QDataStream>
#include <QIODevice>

namespace corvane::map {
namespace {

using client::Members;
using client::Report;

// An entry's flags.
constexpr quint64 kInBattle = 1;
constexpr quint64 kIsDead = 2;
constexpr quint64 kHasPlace = 4;
constexpr quint64 kOtherFacet = 8;
constexpr quint64 kOtherHp = 16;

// A finer age would take a byte more in each entry.
constexpr qint64 kAgeUnit = 20;  // ms

quint64 Difference(std::int32_t now, std::int32_t before) {
  const quint32 difference = static_cast<quint32>(now) - static_cast<quint32>(before);
  return (difference << 1) ^ (difference >> 31 == 0 ? 0 : ~quint32{0});
}

}  // namespace

std::optional<BlockHead> BlockHead::Read(const QByteArray& bytes) {
  QDataStream stream(bytes);
  BlockHead head;
  stream >> head.length >> head.begin >> head.duration >> head.members >> head.checksum;
  const bool isWithinLimits = head.length <= kMaxLength && head.begin >= 0 &&
                              head.begin <= kMaxTime && head.members <= kMaxMembers;
  if (!isWithinLimits || !bytes.startsWith(head.Bytes())) return std::nullopt;
  return head;
}

QByteArray BlockHead::Bytes() const {
  QByteArray bytes;
  QDataStream stream(&bytes, QIODevice::WriteOnly);
  stream << length << begin << duration << members << checksum;
  stream << qChecksum(bytes);
  return bytes;
}

// ---- writing

void BlockWriter::Put(quint64 number) {
  for (; number >= 0x80; number >>= 7)
    myBytes.append(static_cast<char>(number | 0x80));
  myBytes.append(static_cast<char>(number));
}

void BlockWriter::BeginFrame(quint32 at) {
  Put(at - std::exchange(myLastFrame, at));
}

void BlockWriter::Put(quint32 index, const client::Member& member, std::chrono::milliseconds age) {
  Put(2 * (quint64{index} + 1));
  if (index == Members()) {
    myReports.emplace_back();
    Put(member.name.size());
    myBytes.append(member.name.data(), static_cast<qsizetype>(member.name.size()));
  }
  const Report& now = member.report;
  const Report before = std::exchange(myReports[index], now);
  Put((now.inBattle ? kInBattle : 0) | (now.isDead ? kIsDead : 0) |
      (member.hasPlace ? kHasPlace : 0) | (now.facet != before.facet ? kOtherFacet : 0) |
      (now.hp != before.hp ? kOtherHp : 0));
  Put(Difference(now.x, before.x));
  Put(Difference(now.y, before.y));
  if (now.facet != before.facet) Put(Difference(now.facet, before.facet));
  if (now.hp != before.hp) Put(Difference(now.hp, before.hp));
  Put(static_cast<quint64>(std::max<qint64>(0, age.count()) / kAgeUnit));
}

bool BlockWriter::IsFull() const {
  constexpr qsizetype kMaxEntry = Members::kMaxNameBytes + 64;
  return myBytes.size() + qsizetype{Members::kMaxMembers} * kMaxEntry > BlockHead::kMaxLength ||
         Members() + Members::kMaxMembers > BlockHead::kMaxMembers;
}

QByteArray BlockWriter::Finish(quint32 duration) {
  myHead.length = static_cast<quint32>(myBytes.size());
  myHead.duration = duration;
  myHead.members = Members();
  myHead.checksum = qChecksum(myBytes);
  return myHead.Bytes() + myBytes;
}

// ---- reading

BlockReader::BlockReader(QByteArray bytes) : myBytes(std::move(bytes)) {
  const std::optional<BlockHead> head = BlockHead::Read(myBytes);
  if (!head || myBytes.size() != BlockHead::kBytes + head->length ||
      qChecksum(QByteArrayView(myBytes).sliced(BlockHead::kBytes)) != head->checksum) {
    Damage();
    return;
  }
  myHead = *head;
  myTime = myHead.begin;
  FindFrame();
}

void BlockReader::Damage() {
  myIsDamaged = true;
  myAt = myBytes.size();
  myNextFrame.reset();
}

void BlockReader::FindFrame() {
  myNextFrame.reset();
  if (myAt == myBytes.size()) return;
  const quint64 since = Take();
  if (myIsDamaged || since > static_cast<quint64>(myHead.End() - myTime)) return Damage();
  myTime += static_cast<qint64>(since);
  myNextFrame = myTime;
}

void BlockReader::ReadFrame(std::vector<std::size_t>& changed) {
  while (const quint64 code = Take()) {
    const quint64 index = code / 2 - 1;
    if (code == 1 || index > myMembers.size() || index >= myHead.members) return Damage();
    const bool isGone = code % 2 == 1;
    if (index == myMembers.size()) {
      const quint64 length = Take();
      if (isGone || length > Members::kMaxNameBytes ||
          length > static_cast<quint64>(myBytes.size() - myAt))
        return Damage();
      const char* const name = myBytes.constData() + myAt;
      myMembers.push_back({std::string(name, length), {}, 0, false, false});
      myAt += static_cast<qsizetype>(length);
    }
    RecordedMember& member = myMembers[index];
    member.isPresent = !isGone;
    if (!isGone) ReadEntry(member);
    if (myIsDamaged) return;
    changed.push_back(index);
  }
  if (!myIsDamaged) FindFrame();
}

void BlockReader::ReadEntry(RecordedMember& member) {
  const quint64 flags = Take();
  Report& report = member.report;
  report.inBattle = (flags & kInBattle) != 0;
  report.isDead = (flags & kIsDead) != 0;
  member.hasPlace = (flags & kHasPlace) != 0;
  TakeDifference(report.x);
  TakeDifference(report.y);
  if ((flags & kOtherFacet) != 0) TakeDifference(report.facet);
  if ((flags & kOtherHp) != 0) TakeDifference(report.hp);
  const auto age = std::min(Take(), static_cast<quint64>(myTime / kAgeUnit));
  member.news = myTime - static_cast<qint64>(age) * kAgeUnit;
}

quint64 BlockReader::Take() {
  quint64 number = 0;
  for (int shift = 0; shift < 63 && myAt < myBytes.size(); shift += 7) {
    const auto byte = static_cast<unsigned char>(myBytes[myAt++]);
    number |= quint64{byte & 0x7fU} << shift;
    if (byte < 0x80) return number;
  }
  Damage();
  return 0;
}

void BlockReader::TakeDifference(std::int32_t& number) {
  const auto coded = static_cast<quint32>(Take());
  const quint32 difference = (coded >> 1) ^ (~(coded & 1) + 1);
  number = static_cast<std::int32_t>(static_cast<quint32>(number) + difference);
}

}  // namespace corvane::map
