#pragma once

#include <memory>
#include <span>
#include <string_view>

#include "tools/swarm/hostile/hostile_part.h"

namespace corvane::swarm {

struct PartInfo {
  const char* name;
  const char* description;
  std::unique_ptr<HostilePart> (*make)();
};

// All parts that the hostile side can play.
std::span<const PartInfo> HostileParts();
// The part of that name; none if there is none.
const PartInfo* FindPart(std::string_view name);

}  // namespace corvane::swarm
