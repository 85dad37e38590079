#include "viewer/picture_rows.h"

#include <algorithm>

#include <QImageReader>

#include "viewer/png_rows.h"

namespace corvane::viewer {
namespace {

// What Qt reads. A format that can be read in part (JPEG) is decoded anew from its top for each
// strip, so the strips are large; any other at once, within Qt's own bound of memory.
class QtRows : public PictureRows {
 public:
  explicit QtRows(const QString& file) : myFile(file) {
    const QImageReader reader(file);
    mySize = reader.size();
    myReadsInPart = reader.supportsOption(QImageIOHandler::ClipRect) && mySize.isValid();
    if (!myReadsInPart) {
      myWhole.load(file);
      mySize = myWhole.size();
    }
  }

  QSize Size() const override { return mySize; }

  QImage Next(int multiple) override {
    const int times = myReadsInPart ? 4 : 1;
    const int count = std::min(multiple * times, mySize.height() - myNextRow);
    const QRect strip(0, myNextRow, mySize.width(), count);
    myNextRow += count;
    if (!myReadsInPart) return myWhole.copy(strip);
    QImageReader reader(myFile);
    reader.setClipRect(strip);
    return reader.read();
  }

 private:
  QString myFile;
  QSize mySize;
  QImage myWhole;
  bool myReadsInPart = false;
  int myNextRow = 0;
};

}  // namespace

std::unique_ptr<PictureRows> PictureRows::Open(const QString& file, QString& error) {
  if (std::unique_ptr<PictureRows> png = PngRows::Open(file)) return png;
  auto rows = std::make_unique<QtRows>(file);
  if (!rows->Size().isEmpty()) return rows;
  QImageReader reader(file);
  reader.read();
  error = reader.errorString();
  return nullptr;
}

}  // namespace corvane::viewer
