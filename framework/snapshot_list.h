#pragma once

#include <memory>
#include <vector>

namespace corvane {

// A list that is walked while it may change: a snapshot is an immutable shared copy, had in
// constant time. The list is copied only when it changes while somebody holds a snapshot.
template <typename T>
class SnapshotList {
 public:
  using Snapshot = std::shared_ptr<const std::vector<T>>;

  Snapshot Get() const { return myItems; }

  // The list itself, to be changed before anything else is called.
  std::vector<T>& Edit() {
    if (myItems.use_count() > 1) myItems = std::make_shared<std::vector<T>>(*myItems);
    return *myItems;
  }

 private:
  std::shared_ptr<std::vector<T>> myItems = std::make_shared<std::vector<T>>();
};

}  // namespace corvane
