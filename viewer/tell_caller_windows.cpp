#include <QMessageBox>

#include "viewer/tell_caller.h"

namespace corvane::viewer {

// A program with windows has no console there.
void TellCaller(const QString& text, int exitCode) {
  QMessageBox box(exitCode == 0 ? QMessageBox::Information : QMessageBox::Warning, QString(), text,
                  QMessageBox::Ok);
  box.setTextFormat(Qt::PlainText);
  box.exec();
}

}  // namespace corvane::viewer
