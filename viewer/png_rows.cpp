#include "viewer/png_rows.h"

#include <algorithm>
#include <csetjmp>
#include <limits>
#include <png.h>

namespace corvane::viewer {
namespace {

constexpr png_uint_32 kMaxSide = 1 << 20;

void ReadBytes(png_structp png, png_bytep bytes, std::size_t count) {
  auto* file = static_cast<QFile*>(png_get_io_ptr(png));
  if (file->read(reinterpret_cast<char*>(bytes), static_cast<qint64>(count)) !=
      static_cast<qint64>(count)) {
    png_error(png, "the file ends too early");
  }
}

}  // namespace

struct PngRows::Reader {
  // Without the library's own words on standard error.
  png_structp png = png_create_read_struct(
      PNG_LIBPNG_VER_STRING, nullptr,
      [](png_structp failed, png_const_charp) { png_longjmp(failed, 1); },
      [](png_structp, png_const_charp) {});
  png_infop info = png_create_info_struct(png);
};

std::unique_ptr<PngRows> PngRows::Open(const QString& file) {
  std::unique_ptr<PngRows> rows(new PngRows(file));
  return rows->myFile.isOpen() && rows->ReadHeader() ? std::move(rows) : nullptr;
}

PngRows::PngRows(const QString& file) : myFile(file), myReader(std::make_unique<Reader>()) {
  if (!myFile.open(QIODevice::ReadOnly)) return;
  png_set_read_fn(myReader->png, &myFile, ReadBytes);
  png_set_user_limits(myReader->png, kMaxSide, kMaxSide);
}

PngRows::~PngRows() {
  png_destroy_read_struct(&myReader->png, &myReader->info, nullptr);
}

// libpng reports an error by a jump back to here; nothing in between has a destructor.
bool PngRows::ReadHeader() {
  png_struct* const png = myReader->png;
  png_info* const info = myReader->info;
  if (setjmp(png_jmpbuf(png)) != 0) return false;  // NOLINT: the library's way
  png_read_info(png, info);
  if (png_get_interlace_type(png, info) != PNG_INTERLACE_NONE) return false;
  png_set_expand(png);
  png_set_strip_16(png);
  png_set_gray_to_rgb(png);
  // As Qt keeps a pixel on a machine that has its least byte first.
  png_set_bgr(png);
  png_set_filler(png, 0xFF, PNG_FILLER_AFTER);
  png_read_update_info(png, info);
  mySize = QSize(static_cast<int>(png_get_image_width(png, info)),
                 static_cast<int>(png_get_image_height(png, info)));
  return png_get_rowbytes(png, info) == static_cast<std::size_t>(mySize.width()) * 4;
}

QImage PngRows::Next(int multiple) {
  const int count = std::min(multiple, mySize.height() - myNextRow);
  QImage rows(mySize.width(), count, QImage::Format_ARGB32);
  if (rows.isNull() || !ReadRows(rows)) return {};
  myNextRow += count;
  return rows;
}

bool PngRows::ReadRows(QImage& rows) {
  png_struct* const png = myReader->png;
  uchar* const bits = rows.bits();
  const qsizetype stride = rows.bytesPerLine();
  const int count = rows.height();
  if (setjmp(png_jmpbuf(png)) != 0) return false;  // NOLINT: the library's way
  for (int row = 0; row < count; ++row)
    png_read_row(png, bits + row * stride, nullptr);
  return true;
}

}  // namespace corvane::viewer
