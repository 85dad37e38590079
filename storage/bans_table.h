#pragma once

#include <cstdint>
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

  // All bans in the database's order; none when the query fails.
  std::optional<std::vector<Ban>> All();

  // `id` is a number as text.
  [[nodiscard]] bool Delete(const std::string& id);

  // Lifts several bans and commits once.
  [[nodiscard]] bool Delete(const std::vector<std::int64_t>& ids);

 private:
  DatabaseConnection& myConnection;
  StatementValues myValues;
};

}  // namespace corvane
