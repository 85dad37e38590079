#pragma once

#include <concepts>
#include <cstddef>
#include <initializer_list>
#include <string>
#include <string_view>

namespace corvane {

// A name in a line that others chose.
struct Quoted {
  explicit Quoted(std::string_view text) : name(text) {}

  std::string_view name;
};

// Points to its text.
struct StatusPart {
  StatusPart(const std::convertible_to<std::string_view> auto& from) : text(from) {}
  StatusPart(Quoted quoted) : text(quoted.name), isQuoted(true) {}

  std::string_view text;
  bool isQuoted = false;
};

using StatusParts = std::initializer_list<StatusPart>;

// The parts joined to one line, what misleads in them written out. Escapes once for all that show
// or write the line. A line over 4 KiB is cut and ends with the parts' length, so that a
// client does not choose what a line of its text costs.
std::string StatusLine(StatusParts parts);

// The same for the log file, where quoted names over 256 bytes are cut and end with their length.
std::string LogLine(StatusParts parts);

// Whether the two differ.
bool HasLongName(StatusParts parts);

}  // namespace corvane
