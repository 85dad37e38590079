#include "map/recording/recorder.h"

#include <utility>

#include <QDateTime>

namespace corvane::map {
namespace {

using client::Clock;
using client::Member;
using std::chrono::milliseconds;

constexpr int kMaxUnwritten = 8;

milliseconds Since(Clock::time_point begin, Clock::time_point now) {
  return std::chrono::duration_cast<milliseconds>(now - begin);
}

}  // namespace

Recorder::Recorder(client::Members& members, const QString& folder, Timing timing)
    : myMembers(members), myTiming(timing), myFolder(folder) {
  myMembers.Watch(*this);
  myThread.setMaxThreadCount(1);
  myTimer.setInterval(myTiming.frame);
  QObject::connect(&myTimer, &QTimer::timeout, &myTimer, [this] { TakeFrame(Clock::now()); });
}

Recorder::~Recorder() {
  Stop();
  myThread.waitForDone();
  myMembers.Unwatch(*this);
}

void Recorder::Start(const RecordingSource& source) {
  Stop();
  mySource = source;
  myTimer.start();
}

void Recorder::Stop() {
  if (!IsOn()) return;
  myTimer.stop();
  const Clock::time_point now = Clock::now();
  TakeFrame(now);
  EndBlock(now);
}

void Recorder::Discard() {
  myBlock.reset();
  myThread.waitForDone();
}

void Recorder::BeginBlock(Clock::time_point now) {
  myBlock.emplace(QDateTime::currentMSecsSinceEpoch());
  myBlockBegin = now;
  myGone.clear();
  myWaiting.clear();
  for (auto& [member, recorded] : myRecorded) {
    recorded = {};
    Note(*member, recorded);
  }
}

void Recorder::TakeFrame(Clock::time_point now) {
  if (!myBlock && !myRecorded.empty()) BeginBlock(now);
  if (!myBlock) return;
  if (!myGone.empty() || !myWaiting.empty()) {
    myBlock->BeginFrame(static_cast<quint32>(Since(myBlockBegin, now).count()));
    for (const quint32 index : myGone)
      myBlock->PutGone(index);
    for (const Member* member : myWaiting) {
      const auto place = myRecorded.find(member);
      if (place == myRecorded.end() || !std::exchange(place->second.isWaiting, false)) continue;
      std::optional<quint32>& index = place->second.index;
      if (!index) index = myBlock->Members();
      myBlock->Put(*index, *member, Since(member->news, now));
    }
    myBlock->EndFrame();
    myGone.clear();
    myWaiting.clear();
  }
  if (now - myBlockBegin >= myTiming.block || myBlock->IsFull()) EndBlock(now);
}

void Recorder::EndBlock(Clock::time_point now) {
  if (!myBlock) return;
  const QByteArray block = myBlock->Finish(static_cast<quint32>(Since(myBlockBegin, now).count()));
  myBlock.reset();
  if (myUnwritten == kMaxUnwritten) return Fail(tr("the disk is too slow"));
  ++myUnwritten;
  myThread.start([this, block, source = mySource, limits = myLimits] {
    const QString error = myFolder.Append(source, block, limits);
    const auto written = [this, error] {
      --myUnwritten;
      if (!error.isEmpty()) Fail(error);
    };
    QMetaObject::invokeMethod(&myTimer, written, Qt::QueuedConnection);
  });
}

void Recorder::Fail(const QString& reason) {
  if (!IsOn()) return;
  myTimer.stop();
  myBlock.reset();
  if (Failed) Failed(reason);
}

void Recorder::Note(const Member& member, Recorded& recorded) {
  if (myBlock && !std::exchange(recorded.isWaiting, true)) myWaiting.push_back(&member);
}

void Recorder::Added(const Member& member) {
  Note(member, myRecorded[&member]);
}

void Recorder::Changed(const Member& member) {
  if (myBlock) Note(member, myRecorded[&member]);
}

void Recorder::Removed(const Member& member) {
  const auto place = myRecorded.find(&member);
  if (place == myRecorded.end()) return;
  if (myBlock && place->second.index) myGone.push_back(*place->second.index);
  myRecorded.erase(place);
}

}  // namespace corvane::map
