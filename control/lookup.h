#pragma once

#include <optional>
#include <string>
#include <utility>

#include <QJsonObject>

#include "server/server_networks.h"

namespace corvane {

class Operator;

// The seats that a network may have, and those that it has unless the request says.
inline constexpr std::int32_t kMinSeats = 1;
inline constexpr std::int32_t kMaxSeats = 1000;
inline constexpr std::int32_t kDefaultSeats = 5;

// Shared by Questions and Actions. To refuse is to throw Refused.

// The network as a row of an answer.
QJsonObject NetworkRow(const ServerNetworks& network);

// The network of that name. Refuses if there is none.
NetworkRef NetworkNamed(const Operator& op, const std::string& name);

// Refuses with the error of the database.
[[noreturn]] void RefuseForDatabase(const Operator& op);

// The rows of a query. Refuses if it failed.
template <typename Rows>
Rows RowsOrRefuse(std::optional<Rows> rows, const Operator& op) {
  if (!rows) RefuseForDatabase(op);
  return *std::move(rows);
}

}  // namespace corvane
