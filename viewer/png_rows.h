#pragma once

#include <memory>

#include <QFile>

#include "viewer/picture_rows.h"

namespace corvane::viewer {

// A PNG file (RFC 2083) that is not interlaced, read with libpng a row at a time.
class PngRows : public PictureRows {
 public:
  // Null for what is no such file.
  static std::unique_ptr<PngRows> Open(const QString& file);
  ~PngRows() override;

  QSize Size() const override { return mySize; }
  QImage Next(int multiple) override;

 private:
  struct Reader;

  explicit PngRows(const QString& file);
  bool ReadHeader();
  bool ReadRows(QImage& rows);

  QFile myFile;
  std::unique_ptr<Reader> myReader;
  QSize mySize;
  int myNextRow = 0;
};

}  // namespace corvane::viewer
