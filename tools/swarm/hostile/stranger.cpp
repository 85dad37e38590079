#include "tools/swarm/hostile/stranger.h"

namespace corvane::swarm {

void Stranger::Consume(std::size_t count) {
  if (!myOutput.empty()) {
    myOutputPlace += count;
    if (myOutputPlace < myOutput.size()) return;
    myOutput.clear();
    myOutputPlace = 0;
  } else {
    myFillerBytes -= count;
    myBlockPlace = (myBlockPlace + count) % myBlock.size();
  }
}

void Stranger::Clear() {
  myState = State::Offline;
  myInterest = 0;
  myTurn = 0;
  myIsHangingUp = false;
  myCutter.Reset();
  if (myLogin) myLogin->Restart();
  myOutput.clear();
  myOutputPlace = 0;
  myFillerBytes = 0;
}

}  // namespace corvane::swarm
