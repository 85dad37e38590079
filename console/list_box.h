#pragma once

#include <functional>
#include <vector>

#include <QMenu>
#include <QTableView>

#include "framework/coalescing_timer.h"

namespace corvane {

// A read-only list of rows. Selected rows can be copied as text. A frame marks the current row,
// selected or not. A tool tip shows texts that are cut off, and the model's own tip for the row; it
// also opens when the row is reached by keyboard. All rows have one height, so the number of rows
// costs no layout. The list repaints for added and removed rows at most ten times a second.
class ListBox : public QTableView {
 public:
  enum class Heading { None, Shown };
  enum class Selection { One, Several };

  // `name` is what assistive technology calls the list.
  ListBox(const QString& name, Heading heading, Selection selection, QWidget* parent);

  // Fills the context menu, which opens by mouse, the menu key or Shift+F10 unless it has no items.
  std::function<void(QMenu& base)> ConstructContextualMenu;
  // Event: a double click on a row, or Enter while a row is selected.
  std::function<void()> RowOpened;
  // Event: the Delete key while a row is selected.
  std::function<void()> DeleteRequested;

  void setModel(QAbstractItemModel* model) override;

  // Fits each column to its texts (those of the first 500 rows and the longest), up to an equal
  // share of the width; the column with the widest texts gets the rest. Until the first call the
  // last column gets the rest.
  void FitColumns();

  // The first selected row; -1 if there is none.
  int SelectedRow() const;
  // In ascending order.
  std::vector<int> SelectedRows() const;

 protected:
  QModelIndex moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) override;
  void contextMenuEvent(QContextMenuEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  void focusInEvent(QFocusEvent* event) override;
  void currentChanged(const QModelIndex& current, const QModelIndex& previous) override;
  void rowsAboutToBeRemoved(const QModelIndex& parent, int first, int last) override;
  void changeEvent(QEvent* event) override;
  bool viewportEvent(QEvent* event) override;

 private:
  // Handles a key of the list. Returns false for any other key.
  bool TakeKey(const QKeyEvent& key);
  void OpenMenu(QPoint globalPosition);
  void OpenMenuByKey();
  void CopySelectedRows() const;
  // By number of characters, as measuring all texts would take too long; invalid if all are empty.
  QModelIndex LongestText(int column) const;
  void FitRowHeight();
  void PaintRows();
  // The row's tool tip as rich text; empty if the row shows everything.
  QString Tip(int row) const;
  void ShowTip(int row, QPoint globalPosition);

  CoalescingTimer myPainting;
};

}  // namespace corvane
