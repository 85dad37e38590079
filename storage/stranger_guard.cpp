#include "storage/stranger_guard.h"

#include <string>

#include <sqlite3.h>

#include "framework/text.h"
#include "platform/processor_time.h"

namespace corvane {

namespace {

constexpr int kInstructionsBetweenLooks = 100;
constexpr std::int64_t kMaxMemory = std::int64_t{4} << 20;  // bytes above those in use
constexpr int kMaxSelects = 8;
constexpr int kMaxReads = 32;
constexpr std::size_t kMaxLength = std::size_t{16} << 10;  // bytes, of the whole query

}  // namespace

const std::array<StrangerGuard::Limit, 5> StrangerGuard::kLimits = {{
    {SQLITE_LIMIT_SQL_LENGTH, kMaxLength},
    {SQLITE_LIMIT_LENGTH, 64 * 1024},
    {SQLITE_LIMIT_EXPR_DEPTH, 100},
    {SQLITE_LIMIT_COMPOUND_SELECT, kMaxSelects},
    {SQLITE_LIMIT_VDBE_OP, 25'000},
}};

StrangerGuard::StrangerGuard(sqlite3* database, std::string_view table, std::string_view strangers,
                             std::chrono::nanoseconds time)
    : myDatabase(database), myTable(table), myEnd(ProcessorTime() + time) {
  if (myDatabase == nullptr) return;
  sqlite3_progress_handler(myDatabase, kInstructionsBetweenLooks, IsOver, this);
  if (strangers.find('\'') == std::string_view::npos) return;
  Confine();
  // The authorizer takes a table defined by WITH for a view and is not asked about the columns that
  // a JOIN compares. The words are refused even inside other words: no real name has them and a
  // quote.
  const std::string folded = FoldText(strangers.substr(0, kMaxLength));
  myIsRefused = strangers.size() > kMaxLength || folded.find("with") != std::string::npos ||
                folded.find("join") != std::string::npos;
}

StrangerGuard::~StrangerGuard() {
  if (myDatabase == nullptr) return;
  sqlite3_progress_handler(myDatabase, 0, nullptr, nullptr);
  if (!myIsConfined) return;
  sqlite3_set_authorizer(myDatabase, nullptr, nullptr);
  for (std::size_t i = 0; i < kLimits.size(); ++i)
    sqlite3_limit(myDatabase, kLimits[i].category, myEarlierLimits[i]);
  // The hard limit has lowered the soft one; while that remains, SQLite may still see memory as
  // short.
  sqlite3_hard_heap_limit64(myEarlierHardLimit);
  sqlite3_soft_heap_limit64(myEarlierSoftLimit);
}

void StrangerGuard::Confine() {
  myIsConfined = true;
  sqlite3_set_authorizer(myDatabase, Authorize, this);
  for (std::size_t i = 0; i < kLimits.size(); ++i)
    myEarlierLimits[i] = sqlite3_limit(myDatabase, kLimits[i].category, kLimits[i].value);
  // The limit applies to the process, so it is set relative to the memory in use.
  myEarlierSoftLimit = sqlite3_soft_heap_limit64(-1);
  myEarlierHardLimit = sqlite3_hard_heap_limit64(sqlite3_memory_used() + kMaxMemory);
}

// The number of reads bounds the number of joined tables: planning a join of many takes long and
// cannot be interrupted.
int StrangerGuard::Authorize(void* guard, int action, const char* first, const char* /*second*/,
                             const char* /*database*/, const char* view) {
  if (view != nullptr) return SQLITE_OK;
  auto& self = *static_cast<StrangerGuard*>(guard);
  const bool isAllowed =
      (action == SQLITE_SELECT && ++self.mySelects <= kMaxSelects) ||
      (action == SQLITE_READ && SameText(first, self.myTable) && ++self.myReads <= kMaxReads);
  return isAllowed ? SQLITE_OK : SQLITE_DENY;
}

int StrangerGuard::IsOver(void* guard) {
  return ProcessorTime() > static_cast<const StrangerGuard*>(guard)->myEnd ? 1 : 0;
}

}  // namespace corvane
