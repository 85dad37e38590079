#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include <QDateTime>

#include "storage/database_connection.h"
#include "storage/statement_values.h"

namespace corvane {

// The statements on the table "bans". What changes the table returns whether it worked.
class BansTable {
 public:
  struct Ban {
    std::int64_t id = 0;  // the database's
    std::string address;
    std::string by;
    std::string reason;
    QDateTime bandate;
    std::string network;  // of the user who was banned
  };

  explicit BansTable(DatabaseConnection& connection,
                     StatementValues values = StatementValues::Pasted)
      : myConnection(connection), myValues(values) {}

  // Tells what is wrong as the connection does.
  void Tell(const std::string& fault) const { myConnection.Tell(fault); }

  // The file of the open database; empty without one.
  QString DatabaseFile() const { return myConnection.File(); }

  // Whether any row names the address, whatever its network, date and length.
  bool IsBanned(const std::string& address);

  // Stores a ban; "banlength" is always 1, which nothing reads: deliberate.
  [[nodiscard]] bool Add(const Ban& ban);

  // All bans in the order of their numbers, read in portions: `afterEach` may let others be served.
  // None when a query fails.
  std::optional<std::vector<Ban>> All(const std::function<void()>& afterEach = [] {});
  // The next few behind the one with this number; fewer than kPortion where they end.
  std::optional<std::vector<Ban>> Portion(std::int64_t behind);
  static constexpr std::size_t kPortion = 16;
  static constexpr std::int64_t kBegin = std::numeric_limits<std::int64_t>::min();

  // The ban with this number; none also when the query fails. `id` is a number as text.
  std::optional<Ban> Find(const std::string& id);

  // `id` is a number as text.
  [[nodiscard]] bool Delete(const std::string& id);

  // Lifts several bans and commits once.
  [[nodiscard]] bool Delete(const std::vector<std::int64_t>& ids);

 private:
  std::optional<std::vector<Ban>> Select(const std::string& condition,
                                         const DatabaseConnection::Values& values = {});

  DatabaseConnection& myConnection;
  StatementValues myValues;
};

}  // namespace corvane
