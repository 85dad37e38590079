#include "storage/quoted_identifier.h"

namespace corvane {

std::string QuotedIdentifier(std::string_view name) {
  std::string quoted = "\"";
  for (const char byte : name) {
    if (byte == '"') quoted += '"';
    quoted += byte;
  }
  return quoted + '"';
}

}  // namespace corvane
