#pragma once

#include <vector>

#include <QTableView>

namespace corvane {

// A list of rows for reading and choosing from: a single row at a time can be selected, nothing
// can be edited. The columns fill the width in shares that the operator may change by dragging
// their borders. A text that is cut off shows whole in a tool tip. Rows have one height, so any
// number of them costs no layout.
class ListBox : public QTableView {
 public:
  enum class Heading { None, Shown };

  // `name` is what assistive technology calls the list.
  ListBox(const QString& name, Heading heading, QWidget* parent);

  void setModel(QAbstractItemModel* model) override;

  // The selected row; -1 when none is.
  int SelectedRow() const;

 protected:
  void resizeEvent(QResizeEvent* event) override;
  void changeEvent(QEvent* event) override;
  bool viewportEvent(QEvent* event) override;

 private:
  void FitRowHeight();
  void ShareWidth();
  void KeepShare(int column, int width);

  std::vector<double> myShares;  // of the width, by column
  bool mySharing = false;
};

}  // namespace corvane
