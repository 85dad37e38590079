#pragma once

#include <concepts>
#include <cstddef>
#include <initializer_list>
#include <string>
#include <string_view>

namespace corvane {

// A name in a line that a client has chosen; LogLine bounds its length.
struct Quoted {
  explicit Quoted(std::string_view text) : name(text) {}

  std::string_view name;
};

// A part of a line. Borrows its text.
struct StatusPart {
  StatusPart(const std::convertible_to<std::string_view> auto& from) : text(from) {}
  StatusPart(Quoted quoted) : text(quoted.name), isQuoted(true) {}

  std::string_view text;
  bool isQuoted = false;
};

using StatusParts = std::initializer_list<StatusPart>;

// Joins the parts to one line and escapes misleading characters, once for all displays and files.
// A line over 4 KiB is cut and ends with the parts' total length; this bounds what a client's text
// costs.
std::string StatusLine(StatusParts parts);

// The same for the log file: also cuts quoted names over 256 bytes and adds their length.
std::string LogLine(StatusParts parts);

// Whether LogLine differs from StatusLine.
bool HasLongName(StatusParts parts);

}  // namespace corvane
