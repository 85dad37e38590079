#pragma once

namespace corvane {

// Sets a flag for the length of a scope, however the scope ends; then it is what it was.
class ScopedFlag {
 public:
  explicit ScopedFlag(bool& flag) : myFlag(flag), myBefore(flag) { myFlag = true; }
  ~ScopedFlag() { myFlag = myBefore; }
  ScopedFlag(const ScopedFlag&) = delete;
  ScopedFlag& operator=(const ScopedFlag&) = delete;

 private:
  bool& myFlag;
  bool myBefore;
};

}  // namespace corvane
