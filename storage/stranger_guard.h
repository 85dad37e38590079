#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string_view>

struct sqlite3;

namespace corvane {

// Bounds the cost of a query that contains a stranger's text, while the guard exists. The query is
// interrupted after the given processor time. A text with a quote can be code, not just a value;
// then memory, length and depth are bounded too, and the query may only read its own table and call
// no functions. If the operator made that table a view, the view's own reads and calls are allowed.
// The memory limit applies to the whole process meanwhile. Borrows the database.
class StrangerGuard {
 public:
  // `table` is the query's table, `strangers` the stranger's text. The database may be null.
  StrangerGuard(sqlite3* database, std::string_view table, std::string_view strangers,
                std::chrono::nanoseconds time);
  ~StrangerGuard();
  StrangerGuard(const StrangerGuard&) = delete;
  StrangerGuard& operator=(const StrangerGuard&) = delete;

  // Whether the text is too dangerous to prepare the query at all.
  bool IsRefused() const { return myIsRefused; }

 private:
  struct Limit {
    int category;
    int value;
  };

  void Confine();
  static int Authorize(void* guard, int action, const char* first, const char* second,
                       const char* database, const char* view);
  static int IsOver(void* guard);

  static const std::array<Limit, 5> kLimits;

  sqlite3* myDatabase;
  std::string_view myTable;
  std::chrono::nanoseconds myEnd;  // of the thread's ProcessorTime
  bool myIsConfined = false;
  bool myIsRefused = false;
  int mySelects = 0;  // including the query's own
  int myReads = 0;
  std::array<int, 5> myEarlierLimits{};
  std::int64_t myEarlierHardLimit = 0;
  std::int64_t myEarlierSoftLimit = 0;
};

}  // namespace corvane
