#pragma once

#include <atomic>
#include <functional>
#include <thread>

#include <QObject>
#include <QString>

namespace corvane::map {

// The folder in which the tiles of that image lie, or will; another one once the file has changed.
QString TileFolderOf(const QString& image, const QString& cache);

// Cuts the image into tiles in the folder, which is complete where it exists. Returns what went
// wrong; empty where all went well. Ends early, with no folder, once `stops` is set.
QString CutPicture(const QString& image, const QString& folder, const std::atomic<bool>& stops,
                   const std::function<void(int percent)>& progress);

// Cuts one image beside the window's thread.
class PictureCutter {
 public:
  // The events come from the window's loop; neither comes after this object has gone.
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
