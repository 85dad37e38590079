#pragma once

#include <string>

namespace corvane {

// A program's version: a release number for people and a build number, which only grows, for
// comparing.
struct Version {
  int major = 0;
  int minor = 0;
  int bug = 0;
  int build = 0;

  // The four numbers joined with ".".
  std::string FullVersion() const;

  bool operator==(const Version&) const = default;
};

Version RunningVersion();

}  // namespace corvane
