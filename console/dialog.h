#pragma once

#include <initializer_list>

#include <QBoxLayout>
#include <QDialog>
#include <QPushButton>

namespace corvane {

// What the operator's dialogs have in common: each is modal to the window that opened it, lies
// centred over it, has its controls in the order of their making for the Tab key, and destroys
// itself when it closes. Escape closes it without any change. Enter
// presses the button that has the focus, else the default button; where none was made the default,
// Enter in a field does nothing.
class Dialog : public QDialog {
 public:
  // `name` is the class's, for whoever looks for the window. The title shows as it stands, whatever
  // it holds.
  Dialog(const QString& name, const QString& title, QWidget& owner);

  // Shows it with the focus on its first control, as if that had been reached by the Tab key.
  void open() override;

 protected:
  void keyPressEvent(QKeyEvent* event) override;
};

// What a button needs to show its text, in pixels.
int WidthOfText(const QPushButton& button);

// A row of buttons at the right-hand side.
QBoxLayout* ButtonRow(std::initializer_list<QPushButton*> buttons);

}  // namespace corvane
