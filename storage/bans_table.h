#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <QDateTime>

#include "storage/database_connection.h"

namespace corvane {

// The statements on the table "bans". Values are put into the texts as they stand, unescaped: this
// is deliberate.
class BansTable {
 public:
  struct Ban {
    std::int64_t id = 0;
    std::string address;
    std::string by;
    std::string reason;
    QDateTime bandate;
  };

  explicit BansTable(DatabaseConnection& connection) : myConnection(connection) {}

  // Whether any row names the address, whatever its network, date and length.
  bool IsBanned(const std::string& address);

  // Stores a ban with the current date; "banlength" is always 1, which nothing reads: deliberate.
  void Add(const std::string& address, const std::string& by, const std::string& reason,
           const std::string& network);

  // All bans in the database's order; none when the query fails.
  std::optional<std::vector<Ban>> All();

  // `id` is a number as text and goes into the statement as it stands.
  void Delete(const std::string& id);

  // Lifts several bans and commits once.
  void Delete(const std::vector<std::int64_t>& ids);

 private:
  DatabaseConnection& myConnection;
};

}  // namespace corvane
