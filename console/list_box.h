#pragma once

#include <functional>
#include <vector>

#include <QTableView>
#include <QTimer>

namespace corvane {

// A list of rows for reading and choosing from; nothing can be edited. The selected rows can be
// copied as text. The columns fill the width in shares that the operator may change by dragging
// their borders. A text that is cut off shows whole in a tool tip. Rows have one height, so any
// number of them costs no layout, and however often rows come and go, they are painted at most ten
// times a second for it.
class ListBox : public QTableView {
 public:
  enum class Heading { None, Shown };
  enum class Selection { One, Several };

  // `name` is what assistive technology calls the list.
  ListBox(const QString& name, Heading heading, Selection selection, QWidget* parent);

  // Called where the operator asks for a context menu, by mouse or key.
  std::function<void(QPoint globalPosition)> MenuRequested;

  void setModel(QAbstractItemModel* model) override;

  // Gives each column a share of the width, as it is now, that goes by its texts.
  void FitColumns();

  // The first selected row; -1 when none is.
  int SelectedRow() const;
  // In ascending order.
  std::vector<int> SelectedRows() const;

 protected:
  void contextMenuEvent(QContextMenuEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void rowsAboutToBeRemoved(const QModelIndex& parent, int first, int last) override;
  void resizeEvent(QResizeEvent* event) override;
  void changeEvent(QEvent* event) override;
  bool viewportEvent(QEvent* event) override;

 private:
  void CopySelectedRows() const;
  void FitRowHeight();
  void PaintLater();
  void ShareWidth();
  void KeepShare(int column, int width);

  std::vector<double> myShares;  // of the width, by column
  bool mySharing = false;
  QTimer myPaintTimer;
};

}  // namespace corvane
