#include "storage/outsider_guard.h"

#include <string>

#include <sqlite3.h>

#include "framework/text.h"
#include "platform/processor_time.h"

namespace corvane {

namespace {

constexpr int kInstructionsBetweenLooks = 100;
constexpr std::int64_t kMemory = std::int64_t{4} << 20;  // bytes beside what is in use
constexpr int kMostSelects = 8;
constexpr int kMostReads = 32;
constexpr std::size_t kMostLength = std::size_t{16} << 10;  // bytes, of the whole query

}  // namespace

const std::array<OutsiderGuard::Limit, 5> OutsiderGuard::kLimits = {{
    {SQLITE_LIMIT_SQL_LENGTH, kMostLength},
    {SQLITE_LIMIT_LENGTH, 64 * 1024},
    {SQLITE_LIMIT_EXPR_DEPTH, 100},
    {SQLITE_LIMIT_COMPOUND_SELECT, kMostSelects},
    {SQLITE_LIMIT_VDBE_OP, 25'000},
}};

OutsiderGuard::OutsiderGuard(sqlite3* database, std::string_view table, std::string_view outsiders,
                             std::chrono::nanoseconds time)
    : myDatabase(database), myTable(table), myEnd(ProcessorTime() + time) {
  if (myDatabase == nullptr) return;
  sqlite3_progress_handler(myDatabase, kInstructionsBetweenLooks, IsOver, this);
  if (outsiders.find('\'') == std::string_view::npos) return;
  Confine();
  // The authorizer takes a table that WITH defines for a view, and is not asked about the columns
  // that a JOIN compares. The words are looked for as mere letters, since a text of this kind is
  // nobody's name.
  const std::string folded = FoldText(outsiders.substr(0, kMostLength));
  myIsRefused = outsiders.size() > kMostLength || folded.find("with") != std::string::npos ||
                folded.find("join") != std::string::npos;
}

OutsiderGuard::~OutsiderGuard() {
  if (myDatabase == nullptr) return;
  sqlite3_progress_handler(myDatabase, 0, nullptr, nullptr);
  if (!myIsConfined) return;
  sqlite3_set_authorizer(myDatabase, nullptr, nullptr);
  for (std::size_t i = 0; i < kLimits.size(); ++i)
    sqlite3_limit(myDatabase, kLimits[i].category, myEarlierLimits[i]);
  // The soft limit follows the hard one, and as long as there is one SQLite may go on believing
  // that memory is short.
  sqlite3_hard_heap_limit64(myEarlierHardLimit);
  sqlite3_soft_heap_limit64(myEarlierSoftLimit);
}

void OutsiderGuard::Confine() {
  myIsConfined = true;
  sqlite3_set_authorizer(myDatabase, Authorize, this);
  for (std::size_t i = 0; i < kLimits.size(); ++i)
    myEarlierLimits[i] = sqlite3_limit(myDatabase, kLimits[i].category, kLimits[i].value);
  // The limit counts for the process, so it is put above what is in use, the cache of pages too.
  myEarlierSoftLimit = sqlite3_soft_heap_limit64(-1);
  myEarlierHardLimit = sqlite3_hard_heap_limit64(sqlite3_memory_used() + kMemory);
}

// How many tables may be put together is bounded by the reads: planning that takes long before
// anything runs, and cannot be interrupted.
int OutsiderGuard::Authorize(void* guard, int action, const char* first, const char* /*second*/,
                             const char* /*database*/, const char* view) {
  if (view != nullptr) return SQLITE_OK;
  auto& self = *static_cast<OutsiderGuard*>(guard);
  const bool isAllowed =
      (action == SQLITE_SELECT && ++self.mySelects <= kMostSelects) ||
      (action == SQLITE_READ && SameText(first, self.myTable) && ++self.myReads <= kMostReads);
  return isAllowed ? SQLITE_OK : SQLITE_DENY;
}

int OutsiderGuard::IsOver(void* guard) {
  return ProcessorTime() > static_cast<const OutsiderGuard*>(guard)->myEnd ? 1 : 0;
}

}  // namespace corvane
