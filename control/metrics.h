#pragma once

#include <string>

namespace corvane {

class Operator;

// The server's figures as lines of the Prometheus text exposition format 0.0.4. Labels are bounded:
// the first 100 networks by name, then "other"; never a user or an address. All have the label
// `server`, unless it is empty. Walks over all connections and gives way to them.
std::string MetricsText(Operator& op, const std::string& server);

}  // namespace corvane
