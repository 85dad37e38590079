#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string_view>

struct sqlite3;

namespace corvane {

// While one exists, what a query may cost that holds a text of outsiders' is bounded: it is
// interrupted after so much processor time. A text with a quote in it can be more than a value, so
// it is bounded further: in memory, in length and depth, and to reading the query's own table
// without functions. What a view calls and reads that the operator made of that table is no
// outsider's and passes.
class OutsiderGuard {
 public:
  // `table` is the query's. The database may be none.
  OutsiderGuard(sqlite3* database, std::string_view table, std::string_view outsiders,
                std::chrono::nanoseconds time);
  ~OutsiderGuard();
  OutsiderGuard(const OutsiderGuard&) = delete;
  OutsiderGuard& operator=(const OutsiderGuard&) = delete;

  // Whether the query may be prepared at all.
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
  std::chrono::nanoseconds myEnd;  // of its ProcessorTime
  bool myIsConfined = false;
  bool myIsRefused = false;
  int mySelects = 0;  // the outsiders' and the query's own
  int myReads = 0;
  std::array<int, 5> myEarlierLimits{};
  std::int64_t myEarlierHardLimit = 0;
  std::int64_t myEarlierSoftLimit = 0;
};

}  // namespace corvane
