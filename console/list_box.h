#pragma once

#include <functional>
#include <vector>

#include <QMenu>
#include <QTableView>

#include "framework/gathering.h"

namespace corvane {

// A list of rows for reading and choosing from; nothing can be edited. The selected rows can be
// copied as text. The row that has the keyboard has a frame, selected or not. Where a text is cut
// off, or the model has more to say of a row, a tool tip shows it, also when the row is reached by
// key. Rows have one height, so any number of them costs no layout. Rows that come or go are
// painted at once, and at most ten times a second.
class ListBox : public QTableView {
 public:
  enum class Heading { None, Shown };
  enum class Selection { One, Several };

  // `name` is what assistive technology calls the list.
  ListBox(const QString& name, Heading heading, Selection selection, QWidget* parent);

  // Fills the context menu that the operator asks for: by mouse, the menu key or Shift+F10. One
  // without items stays closed.
  std::function<void(QMenu& base)> ConstructContextualMenu;
  // Called for a double click on a row, and for Enter while a row is selected.
  std::function<void()> RowOpened;
  // Called for the Delete key while a row is selected.
  std::function<void()> DeleteRequested;

  void setModel(QAbstractItemModel* model) override;

  // Gives each column the width of its texts (those of the first rows and its longest one), up to
  // an even share; the one with the widest texts gets what is left. At first that is the last
  // column.
  void FitColumns();

  // The first selected row; -1 when none is.
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
  // Does what the list has for the key; whether there is anything.
  bool TakeKey(const QKeyEvent& key);
  void OpenMenu(QPoint globalPosition);
  void OpenMenuByKey();
  void CopySelectedRows() const;
  // Of so many characters, since measuring all texts takes too long; invalid where all are empty.
  QModelIndex LongestText(int column) const;
  void FitRowHeight();
  void PaintRows();
  // What a tool tip says of the row, marked up; empty when the row shows everything.
  QString Tip(int row) const;
  void ShowTip(int row, QPoint globalPosition);

  Gathering myPainting;
};

}  // namespace corvane
