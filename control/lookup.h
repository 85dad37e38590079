#pragma once

#include <optional>
#include <string>
#include <utility>

#include <QJsonObject>

#include "server/server_networks.h"

namespace corvane {

class Operator;

// What questions and actions share.

QJsonObject NetworkRow(const ServerNetworks& network);

// The network of that name. Refuses where there is none.
NetworkRef NetworkNamed(const Operator& actions, const std::string& name);

// Refuses with what is wrong with the database.
[[noreturn]] void RefuseForDatabase(const Operator& actions);

// What the database gave. Refuses where its query failed.
template <typename Rows>
Rows Given(std::optional<Rows> rows, const Operator& actions) {
  if (!rows) RefuseForDatabase(actions);
  return *std::move(rows);
}

}  // namespace corvane
