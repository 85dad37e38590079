#include "console/message_boxes.h"

#include <QApplication>
#include <QMessageBox>

#include "console/platform.h"
#include "framework/text.h"

namespace corvane {

MessageBox::Answer ShowMessageBox(const MessageBox& box) {
  const bool isQuestion = box.kind == MessageBox::Kind::Question;
  QMessageBox window(QApplication::activeWindow());
  window.setWindowTitle(box.title.empty() ? QStringLiteral("Corvane Server")
                                          : DisplayText(box.title));
  window.setTextFormat(Qt::PlainText);
  window.setText(DisplayText(box.text));
  if (isQuestion) window.setIcon(QMessageBox::Question);
  window.setStandardButtons(isQuestion ? QMessageBox::Yes | QMessageBox::No : QMessageBox::Ok);
  if (isQuestion) {
    // What a stray key presses changes nothing.
    window.setDefaultButton(QMessageBox::No);
    window.setEscapeButton(QMessageBox::No);
  }
  const int button = window.exec();
  if (!isQuestion) return MessageBox::Answer::OK;
  return button == QMessageBox::Yes ? MessageBox::Answer::Yes : MessageBox::Answer::No;
}

MessageBoxFunction MessageBoxesOfThePlatform() {
  return HasDisplay() ? ShowMessageBox : MessageToStandardError;
}

}  // namespace corvane
