#pragma once

#include <optional>
#include <string>
#include <utility>

#include <QJsonObject>

#include "server/server_networks.h"

namespace corvane {

class Operator;

// What Questions and Actions share.

QJsonObject NetworkRow(const ServerNetworks& network);

// The network of that name. Refuses where there is none.
NetworkRef NetworkNamed(const Operator& op, const std::string& name);

// Refuses with what is wrong with the database.
[[noreturn]] void RefuseForDatabase(const Operator& op);

// What the database gave. Refuses where its query failed.
template <typename Rows>
Rows RowsOrRefuse(std::optional<Rows> rows, const Operator& op) {
  if (!rows) RefuseForDatabase(op);
  return *std::move(rows);
}

}  // namespace corvane
