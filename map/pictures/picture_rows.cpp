#include "map/pictures/picture_rows.h"

#include <algorithm>
#include <csetjmp>
#include <png.h>

#include <QFile>
#include <QImageReader>

namespace corvane::map {
namespace {

constexpr png_uint_32 kMaxSide = 1 << 20;

// Reads a non-interlaced PNG file (RFC 2083) with libpng, a row at a time. Qt decodes such a file
// as a whole and refuses one of more than 128 MB, so it could not show a map of 16,384 x 16,384
// pixels. This holds 30 MB of such a map at a time.
class PngRows : public PictureRows {
 public:
  explicit PngRows(const QString& file) : myFile(file) {
    if (!myFile.open(QIODevice::ReadOnly)) return;
    png_set_read_fn(myPng, &myFile, ReadBytes);
    png_set_user_limits(myPng, kMaxSide, kMaxSide);
    myIsReadable = ReadHeader();
  }
  ~PngRows() override { png_destroy_read_struct(&myPng, &myInfo, nullptr); }
  PngRows(const PngRows&) = delete;
  PngRows& operator=(const PngRows&) = delete;

  bool IsReadable() const { return myIsReadable; }

  QSize Size() const override {
    return {static_cast<int>(png_get_image_width(myPng, myInfo)),
            static_cast<int>(png_get_image_height(myPng, myInfo))};
  }

  QImage Next(int multiple) override {
    const int count = std::min(multiple, Size().height() - myNextRow);
    QImage rows(Size().width(), count, QImage::Format_ARGB32);
    if (rows.isNull() || !ReadRows(rows)) return {};
    myNextRow += count;
    return rows;
  }

 private:
  static void ReadBytes(png_structp png, png_bytep bytes, std::size_t count) {
    auto* file = static_cast<QFile*>(png_get_io_ptr(png));
    if (file->read(reinterpret_cast<char*>(bytes), static_cast<qint64>(count)) !=
        static_cast<qint64>(count)) {
      png_error(png, "the file ends too early");
    }
  }

  // libpng reports errors by a jump to here, so no frame in between may have destructors.
  bool ReadHeader() {
    if (setjmp(png_jmpbuf(myPng)) != 0) return false;  // NOLINT: the library's way
    png_read_info(myPng, myInfo);
    if (png_get_interlace_type(myPng, myInfo) != PNG_INTERLACE_NONE) return false;
    png_set_expand(myPng);
    png_set_strip_16(myPng);
    png_set_gray_to_rgb(myPng);
    // Qt's byte order on a little-endian machine.
    png_set_bgr(myPng);
    png_set_filler(myPng, 0xFF, PNG_FILLER_AFTER);
    png_read_update_info(myPng, myInfo);
    return png_get_rowbytes(myPng, myInfo) == std::size_t{png_get_image_width(myPng, myInfo)} * 4;
  }

  bool ReadRows(QImage& rows) {
    uchar* const bits = rows.bits();
    const qsizetype stride = rows.bytesPerLine();
    const int count = rows.height();
    if (setjmp(png_jmpbuf(myPng)) != 0) return false;  // NOLINT: the library's way
    for (int row = 0; row < count; ++row)
      png_read_row(myPng, bits + row * stride, nullptr);
    return true;
  }

  QFile myFile;
  // With handlers, because libpng's own write to standard error.
  png_structp myPng = png_create_read_struct(
      PNG_LIBPNG_VER_STRING, nullptr,
      [](png_structp failed, png_const_charp) { png_longjmp(failed, 1); },
      [](png_structp, png_const_charp) {});
  png_infop myInfo = png_create_info_struct(myPng);
  bool myIsReadable = false;
  int myNextRow = 0;
};

// Reads other formats with Qt. A format that can be read in part (JPEG) is decoded from its top
// again for each strip, so the strips are large. Any other is read as a whole, within Qt's memory
// limit.
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
  if (auto png = std::make_unique<PngRows>(file); png->IsReadable()) return png;
  auto rows = std::make_unique<QtRows>(file);
  if (!rows->Size().isEmpty()) return rows;
  QImageReader reader(file);
  reader.read();
  error = reader.errorString();
  return nullptr;
}

}  // namespace corvane::map
