#pragma once

#include <vector>

#include <QHeaderView>
#include <QObject>

namespace corvane {

// The widths of a list's columns, which fill it. What is left over is shared out in proportion to
// what the columns want; for a shortage the widest pays first, so that short texts beside a long
// one stay whole. What they want is told, and told anew by the operator, who drags a border: then
// it is what he leaves. What a small window does to the columns is over with it. Borrows the
// header.
class ColumnWidths : public QObject {
 public:
  explicit ColumnWidths(QHeaderView& header);

  // The widths that the columns want, in whatever unit.
  void Want(std::vector<double> widths);
  // Shares out a width in pixels.
  void Fill(int width);

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void LetGo();

  QHeaderView& myHeader;
  std::vector<double> myWanted;
  int myWidth = 0;
  bool myIsHeld = false;      // a mouse button is down on the header
  bool myWasDragged = false;  // and a border has moved since
};

}  // namespace corvane
