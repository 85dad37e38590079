#pragma once

#include <functional>
#include <optional>

#include <QString>

#include "web/config.h"
#include "web/http_server.h"

namespace corvane::web {

// Makes what the links to a network lead to. Cuts the place's pictures into tiles in the data
// folder, unless they are there already; `reported` is told before. None on failure, with the
// reason in `error`.
std::optional<Site> BuildSite(const WebNetwork& network, const QString& dataFolder,
                              const std::function<void(const QString&)>& reported, QString& error);

}  // namespace corvane::web
