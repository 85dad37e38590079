#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "storage/database_connection.h"
#include "storage/statement_values.h"

namespace corvane {

// The statements on the table "admins". Changes return whether they worked. Borrows the connection.
class AdminsTable {
 public:
  struct Admin {
    std::int64_t id = 0;
    std::string name;
    std::string network;
    std::string address;
  };

  static constexpr std::chrono::milliseconds kMaxTime{20};

  explicit AdminsTable(DatabaseConnection& connection,
                       StatementValues values = StatementValues::Pasted)
      : myConnection(connection), myValues(values) {}

  // Whether this name, network and address together have a grant. The name comes from a stranger,
  // so the result is also false if the query takes more processor time than `time`.
  bool IsAdmin(const std::string& name, const std::string& network, const std::string& address,
               std::chrono::nanoseconds time = kMaxTime);

  [[nodiscard]] bool Add(const std::string& name, const std::string& address,
                         const std::string& network);
  // The row that Add adds, for BanImport.
  static std::pair<std::string, DatabaseRecord> Row(const Admin& admin);

  // All grants in the database's order; none if the query fails.
  std::optional<std::vector<Admin>> All();

  // Deletes several grants in one transaction.
  [[nodiscard]] bool Delete(const std::vector<std::int64_t>& ids);

 private:
  DatabaseConnection& myConnection;
  StatementValues myValues;
};

}  // namespace corvane
