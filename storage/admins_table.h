#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "storage/database_connection.h"
#include "storage/statement_values.h"

namespace corvane {

// The statements on the table "admins". What changes the table returns whether it worked.
class AdminsTable {
 public:
  struct Admin {
    std::int64_t id = 0;
    std::string name;
    std::string network;
    std::string address;
  };

  static constexpr std::chrono::milliseconds kMostTime{20};

  explicit AdminsTable(DatabaseConnection& connection,
                       StatementValues values = StatementValues::Pasted)
      : myConnection(connection), myValues(values) {}

  // Whether the user of that name, on that network and from that address, was made administrator.
  // The name is an outsider's text: false when it makes the question take more processor time than
  // this.
  bool IsAdmin(const std::string& name, const std::string& network, const std::string& address,
               std::chrono::nanoseconds time = kMostTime);

  [[nodiscard]] bool Add(const std::string& name, const std::string& address,
                         const std::string& network);

  // All grants in the database's order; none when the query fails.
  std::optional<std::vector<Admin>> All();

  // Takes back several grants and commits once.
  [[nodiscard]] bool Delete(const std::vector<std::int64_t>& ids);

 private:
  DatabaseConnection& myConnection;
  StatementValues myValues;
};

}  // namespace corvane
