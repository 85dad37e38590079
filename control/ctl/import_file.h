#pragma once

#include <optional>

#include <QByteArray>
#include <QJsonObject>

namespace corvane::ctl {

class ServerLink;

// Sends the file that the request names in portions, with the progress on standard error, and has
// the server store it. Returns the last answer: a refusal, or that the list is stored; none if the
// server does not answer. Throws UsageError if the file cannot be read.
std::optional<QByteArray> ImportFile(ServerLink& server, QJsonObject request);

}  // namespace corvane::ctl
