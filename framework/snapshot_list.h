#pragma once

#include <memory>
#include <vector>

namespace corvane {

// A list that may change while it is walked. A snapshot is an immutable shared copy, taken in
// constant time; the list is copied only if it changes while a snapshot exists.
template <typename T>
class SnapshotList {
 public:
  using Snapshot = std::shared_ptr<const std::vector<T>>;

  Snapshot Get() const { return myItems; }

  // The list itself, valid for changes until the next call.
  std::vector<T>& Edit() {
    if (myItems.use_count() > 1) myItems = std::make_shared<std::vector<T>>(*myItems);
    return *myItems;
  }

 private:
  std::shared_ptr<std::vector<T>> myItems = std::make_shared<std::vector<T>>();
};

}  // namespace corvane
