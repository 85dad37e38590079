#pragma once

#include <map>
#include <string>

#include <QString>

namespace corvane::web {

// A file of the page, in memory.
struct Asset {
  std::string bytes;
  const char* type = nullptr;
};

// The files of the page by name, ours from the program and Leaflet's from its package. No other
// file is ever served.
using Assets = std::map<std::string, Asset>;

// Sets `error` to a text if Leaflet's files are missing.
Assets LoadAssets(QString& error);

}  // namespace corvane::web
