#pragma once

#include <memory>

#include <QImage>
#include <QSize>
#include <QString>

namespace corvane::map {

// Reads a picture in strips from top to bottom, so that it can be larger than memory.
class PictureRows {
 public:
  virtual ~PictureRows() = default;

  // Null, with a text in `error`, if the file cannot be read.
  static std::unique_ptr<PictureRows> Open(const QString& file, QString& error);

  virtual QSize Size() const = 0;
  // The next strip. Its number of rows is a multiple of `multiple`, except for the last strip. A
  // null image if the file is damaged.
  virtual QImage Next(int multiple) = 0;
};

}  // namespace corvane::map
