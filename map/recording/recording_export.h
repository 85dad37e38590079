#pragma once

#include <functional>
#include <stop_token>

#include <QString>

#include "map/recording/recording.h"

namespace corvane::map {

// Writes each recorded report as a line of a CSV file (RFC 4180), or as a point of a GeoJSON file
// (RFC 7946) if the path ends in ".geojson". A spreadsheet takes no name for a formula. Works in
// any thread. Returns the error; empty if there is none or it was stopped, which leaves no file.
QString Export(const Recording& recording, const QString& path, const std::stop_token& stops,
               const std::function<void(int percent)>& progress);

}  // namespace corvane::map
