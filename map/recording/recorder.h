#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <unordered_map>
#include <vector>

#include <QCoreApplication>
#include <QThreadPool>
#include <QTimer>

#include "client/members.h"
#include "map/recording/recording_block.h"
#include "map/recording/recording_folder.h"

namespace corvane::map {

// Records the members: collects what has changed in frames, frames in blocks, and lets a thread
// append the blocks to a file. Neither a flood of reports nor a slow disk delays the caller: a
// frame has the last report of each member, and recording stops when blocks pile up.
class Recorder : public client::MembersWatcher {
  Q_DECLARE_TR_FUNCTIONS(corvane::map::Recorder)

 public:
  // The defaults are for use; tests shorten them.
  struct Timing {
    std::chrono::milliseconds frame{500};
    std::chrono::milliseconds block{10'000};
  };

  // Borrows the members; there are none yet.
  Recorder(client::Members& members, const QString& folder, Timing timing);
  // Waits until everything is written.
  ~Recorder() override;

  // Recording has stopped: a block could not be written.
  std::function<void(const QString& reason)> Failed;

  void Start(const RecordingSource& source);
  void Stop();
  bool IsOn() const { return myTimer.isActive(); }
  void SetLimits(const RecordingLimits& limits) { myLimits = limits; }
  // Drops what is not written yet, and waits until nothing is being written.
  void Discard();

  void Added(const client::Member& member) override;
  void Changed(const client::Member& member) override;
  void Removed(const client::Member& member) override;

 private:
  struct Recorded {
    std::optional<quint32> index;  // in the block
    bool isWaiting = false;        // for the next frame
  };

  void BeginBlock(client::Clock::time_point now);
  void TakeFrame(client::Clock::time_point now);
  void EndBlock(client::Clock::time_point now);
  void Note(const client::Member& member, Recorded& recorded);
  void Fail(const QString& reason);

  client::Members& myMembers;
  Timing myTiming;
  QTimer myTimer;
  RecordingSource mySource;
  RecordingLimits myLimits;
  RecordingFolder myFolder;  // the thread's, unless nothing is being written
  std::unordered_map<const client::Member*, Recorded> myRecorded;
  std::vector<const client::Member*> myWaiting;  // some may be gone
  std::vector<quint32> myGone;
  std::optional<BlockWriter> myBlock;  // none until there is a member
  client::Clock::time_point myBlockBegin;
  int myUnwritten = 0;
  QThreadPool myThread;
};

}  // namespace corvane::map
