#pragma once

#include <memory>

#include <QImage>
#include <QSize>
#include <QString>

namespace corvane::map {

// A picture read from its top to its bottom in strips, so that one that is far larger than memory
// can be cut.
class PictureRows {
 public:
  virtual ~PictureRows() = default;

  // What is wrong with the file goes into `error`; null then.
  static std::unique_ptr<PictureRows> Open(const QString& file, QString& error);

  virtual QSize Size() const = 0;
  // The next rows, `multiple` of them or several times as many; fewer only at the end. Null where
  // the file is damaged.
  virtual QImage Next(int multiple) = 0;
};

}  // namespace corvane::map
