#pragma once

#include <atomic>
#include <functional>
#include <thread>

#include <QObject>
#include <QString>

namespace corvane::map {

// The cache folder for the image's tiles. It depends on the file's path, size and time, so a
// changed image has another one.
QString TileFolderOf(const QString& image, const QString& cache);

// Cuts the image into tiles and returns an error text, which is empty on success. Creates `folder`
// only when all tiles are written. Returns early, without a folder, once `stops` is set.
QString CutPicture(const QString& image, const QString& folder, const std::atomic<bool>& stops,
                   const std::function<void(int percent)>& progress);

// Cuts an image on its own thread. The destructor stops it and waits for it.
class PictureCutter {
 public:
  // Raised from Qt's loop, on the thread that made this object. Both must be set before Start. An
  // empty error means success.
  std::function<void(int percent)> Progressed;
  std::function<void(const QString& error)> Ended;

  PictureCutter() = default;
  ~PictureCutter();
  PictureCutter(const PictureCutter&) = delete;
  PictureCutter& operator=(const PictureCutter&) = delete;

  void Start(const QString& image, const QString& folder);

 private:
  QObject myReceiver;
  std::atomic<bool> myStops = false;
  std::thread myThread;
};

}  // namespace corvane::map
