#include "map/recording/recording.h"

#include <algorithm>

#include <QJsonDocument>
#include <QJsonObject>

#include "map/recording/recording_block.h"

namespace corvane::map {
namespace {

constexpr QLatin1String kFormat("Corvane recording 1");
constexpr qint64 kMaxFirstLine = 4096;
// The longest recording, and its longest block.
constexpr qint64 kMaxDuration = qint64{31} * 24 * 3600 * 1000;

}  // namespace

QByteArray Recording::FirstLine(const RecordingSource& source) {
  const QJsonObject line{{"format", kFormat},
                         {"host", source.host},
                         {"port", source.port},
                         {"network", source.network}};
  return QJsonDocument(line).toJson(QJsonDocument::Compact) + '\n';
}

std::optional<Recording> Recording::Open(const QString& path) {
  QFile file(path);
  // Unbuffered, since only the blocks' heads are read.
  if (!file.open(QFile::ReadOnly | QFile::Unbuffered)) return std::nullopt;
  const QJsonObject line = QJsonDocument::fromJson(file.readLine(kMaxFirstLine)).object();
  if (line["format"].toString() != kFormat) return std::nullopt;
  Recording recording;
  recording.myPath = path;
  recording.mySource = {line["host"].toString(), static_cast<quint16>(line["port"].toInt()),
                        line["network"].toString()};
  recording.FindBlocks(file);
  if (recording.myBlocks.empty()) return std::nullopt;
  return recording;
}

void Recording::FindBlocks(QFile& file) {
  myBytes = file.size();
  qint64 at = file.pos();
  while (at + BlockHead::kBytes <= myBytes) {
    file.seek(at);
    const std::optional<BlockHead> head = BlockHead::Read(file.read(BlockHead::kBytes));
    const bool isNext = head && head->begin >= myEnd && myBlocks.size() < kMaxBlocks &&
                        (myBlocks.empty() || head->End() - Begin() <= kMaxDuration);
    if (!isNext) {
      myIsDamaged = true;
      return;
    }
    const qint64 offset = at;
    at += BlockHead::kBytes + head->length;
    if (at > myBytes) return;
    myBlocks.push_back({head->begin, offset});
    myEnd = head->End();
    myMembers = std::max(myMembers, head->members);
  }
}

std::size_t Recording::BlockAt(qint64 time) const {
  const auto next =
      std::upper_bound(myBlocks.begin(), myBlocks.end(), time,
                       [](qint64 when, const Block& block) { return when < block.begin; });
  return next == myBlocks.begin() ? 0 : static_cast<std::size_t>(next - myBlocks.begin() - 1);
}

QByteArray Recording::Load(std::size_t block) const {
  QFile file(myPath);
  if (!file.open(QFile::ReadOnly) || !file.seek(myBlocks[block].offset)) return {};
  const QByteArray bytes = file.peek(BlockHead::kBytes);
  const std::optional<BlockHead> head = BlockHead::Read(bytes);
  return head ? file.read(BlockHead::kBytes + head->length) : bytes;
}

}  // namespace corvane::map
