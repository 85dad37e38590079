#include "console/column_widths.h"

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <utility>

#include <QEvent>

namespace corvane {
namespace {

// The width that none may exceed for all to fit.
double MostWidth(std::vector<double> wanted, double width) {
  std::sort(wanted.begin(), wanted.end());
  double left = width;
  for (std::size_t i = 0; i < wanted.size(); ++i) {
    const double evenShare = left / static_cast<double>(wanted.size() - i);
    if (wanted[i] > evenShare) return evenShare;
    left -= wanted[i];
  }
  return width;
}

std::vector<double> Shares(std::vector<double> wanted, double width) {
  const double sum = std::accumulate(wanted.begin(), wanted.end(), 0.0);
  const double growth = std::max(1.0, width / std::max(sum, 1.0));
  const double most = MostWidth(wanted, width);
  for (double& share : wanted)
    share = sum > width ? std::min(share, most) : share * growth;
  return wanted;
}

}  // namespace

ColumnWidths::ColumnWidths(QHeaderView& header) : myHeader(header) {
  // The last column takes what is left.
  header.setStretchLastSection(true);
  header.viewport()->installEventFilter(this);
  connect(&header, &QHeaderView::sectionResized, this, [this] { myWasDragged = myIsHeld; });
}

void ColumnWidths::Want(std::vector<double> widths) {
  myWanted = std::move(widths);
  Fill(myWidth);
}

void ColumnWidths::Fill(int width) {
  myWidth = width;
  const std::vector<double> shares = Shares(myWanted, width);
  for (std::size_t column = 0; column + 1 < shares.size(); ++column)
    myHeader.resizeSection(static_cast<int>(column), qRound(shares[column]));
}

bool ColumnWidths::eventFilter(QObject* watched, QEvent* event) {
  const QEvent::Type type = event->type();
  if (type == QEvent::MouseButtonPress || type == QEvent::MouseButtonDblClick) {
    myIsHeld = true;
  } else if (type == QEvent::MouseButtonRelease) {
    LetGo();
  }
  return QObject::eventFilter(watched, event);
}

void ColumnWidths::LetGo() {
  myIsHeld = false;
  if (!std::exchange(myWasDragged, false)) return;
  std::vector<double> widths(myWanted.size());
  for (std::size_t column = 0; column < widths.size(); ++column)
    widths[column] = myHeader.sectionSize(static_cast<int>(column));
  // Brings a column back that was pushed out of sight.
  Want(std::move(widths));
}

}  // namespace corvane
