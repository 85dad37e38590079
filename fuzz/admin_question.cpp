// Asks whether the input is the name of an administrator. For any name the answer takes little time
// and memory, and the next answer is right.

#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <memory>

#include <QTemporaryDir>
#include <sqlite3.h>

#include "fuzz/expect.h"
#include "storage/admins_table.h"
#include "tests/support/other_program.h"

namespace {

using namespace corvane;

constexpr double kMaxSeconds = 0.2;  // processor time; the limit of 20 ms is wall time
constexpr std::int64_t kMaxMemory = std::int64_t{5} << 20;

class Question {
 public:
  Question() {
    const QString file = myFolder.filePath(QStringLiteral("serverdb.rsd"));
    MakeDatabase(file);
    OtherProgram(file).Run(
        "INSERT INTO networks VALUES('home', 'secret', 5, 1);"
        "INSERT INTO bans(address, reason) VALUES('10.0.0.9', 'spam');"
        "INSERT INTO admins(name, address, network) VALUES('op', '10.0.0.1', 'home');"
        "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i+1 FROM n WHERE i<100)"
        "INSERT INTO admins(name, address, network) SELECT i, '10.0.0.2', 'away' FROM n");
    if (!myConnection.Connect(file)) std::abort();
  }

  bool Ask(const std::string& name) {
    return AdminsTable(myConnection).IsAdmin(name, "home", "10.0.0.1");
  }

 private:
  QTemporaryDir myFolder;
  DatabaseConnection myConnection;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const auto question = std::make_unique<Question>();
  const std::string name(reinterpret_cast<const char*>(data), size);
  sqlite3_memory_highwater(1);
  const std::int64_t memory = sqlite3_memory_used();
  const std::clock_t start = std::clock();
  const bool isAdmin = question->Ask(name);
  const double seconds = static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
  Expect(seconds <= kMaxSeconds, "time");
  Expect(sqlite3_memory_highwater(0) - memory <= kMaxMemory, "memory");
  Expect(isAdmin == (name == "op") || name.find('\'') != std::string::npos, "a name is a name");
  Expect(sqlite3_hard_heap_limit64(-1) == 0 && sqlite3_soft_heap_limit64(-1) == 0, "limits stay");
  Expect(question->Ask("op") && !question->Ask("of"), "the next answer");
  return 0;
}
