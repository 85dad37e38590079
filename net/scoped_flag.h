#pragma once

namespace corvane {

// Sets a flag for the length of a scope, however the scope ends.
class ScopedFlag {
 public:
  explicit ScopedFlag(bool& flag) : myFlag(flag) { myFlag = true; }
  ~ScopedFlag() { myFlag = false; }
  ScopedFlag(const ScopedFlag&) = delete;
  ScopedFlag& operator=(const ScopedFlag&) = delete;

 private:
  bool& myFlag;
};

}  // namespace corvane
