// Plays the input as a recording: times go forward, and members are bounded. Mends the checksums
// first, since few inputs have right ones.

#include <cstdint>

#include <QFile>
#include <QTemporaryDir>
#include <QtEndian>

#include "fuzz/expect.h"
#include "map/recording/player.h"

using namespace corvane;
using namespace corvane::map;

namespace {

void MendChecksums(QByteArray& bytes) {
  qsizetype at = bytes.indexOf('\n') + 1;
  while (at + BlockHead::kBytes <= bytes.size()) {
    char* const head = bytes.data() + at;
    const auto length = qFromBigEndian<quint32>(head);
    const qsizetype frames = at + BlockHead::kBytes;
    if (length > static_cast<quint64>(bytes.size() - frames)) return;
    qToBigEndian(qChecksum(QByteArrayView(bytes).sliced(frames, length)), head + 20);
    qToBigEndian(qChecksum(QByteArrayView(head, 22)), head + 22);
    at = frames + length;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const QTemporaryDir folder;
  QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
  MendChecksums(bytes);
  QFile file(folder.filePath("recording"));
  Expect(file.open(QFile::WriteOnly | QFile::Truncate), "the file can be written");
  file.write(bytes);
  file.close();

  const std::optional<Recording> recording = Recording::Open(file.fileName());
  if (!recording) return 0;
  client::Members members;
  Player player(*recording, members);
  qint64 last = recording->Begin();
  while (const auto next = player.NextTime()) {
    Expect(*next >= last && *next <= recording->End(), "times go forward, up to the end");
    player.PlayTo(last = *next);
    Expect(members.Count() <= recording->Members(), "no more members than the heads say");
  }
  player.JumpTo(recording->Begin() / 2 + recording->End() / 2);
  Expect(members.Count() <= recording->Members(), "nor after a jump");
  return 0;
}
