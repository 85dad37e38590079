#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <QDateTime>

#include "storage/database_connection.h"

namespace corvane {

// The statements on the table "bans". Values are put into the texts as they stand, unescaped: this
// is deliberate. What changes the table returns whether it worked.
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

  explicit BansTable(DatabaseConnection& connection) : myConnection(connection) {}

  // Whether any row names the address, whatever its network, date and length.
  bool IsBanned(const std::string& address);

  // Stores a ban; "banlength" is always 1, which nothing reads: deliberate.
  [[nodiscard]] bool Add(const Ban& ban);

  // All bans in the database's order; none when the query fails.
  std::optional<std::vector<Ban>> All();

  // `id` is a number as text and goes into the statement as it stands.
  [[nodiscard]] bool Delete(const std::string& id);

  // Lifts several bans and commits once.
  [[nodiscard]] bool Delete(const std::vector<std::int64_t>& ids);

 private:
  DatabaseConnection& myConnection;
};

}  // namespace corvane
