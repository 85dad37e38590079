#pragma once

#include <atomic>
#include <functional>

#include <QString>

namespace corvane::map {

// The cache folder for the image's tiles. It depends on the file's path, size and time, so a
// changed image has another one.
QString TileFolderOf(const QString& image, const QString& cache);

// Cuts the image into tiles and returns an error text, which is empty on success. Creates `folder`
// only when all tiles are written. Returns early, without a folder, once `stops` is set.
QString CutPicture(const QString& image, const QString& folder, const std::atomic<bool>& stops,
                   const std::function<void(int percent)>& progress);

}  // namespace corvane::map
