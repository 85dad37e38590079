#include <QMessageBox>

#include "viewer/tell_caller.h"

namespace corvane::viewer {

// A program with windows has no console there. The columns of help are made for letters of one
// width.
void TellCaller(const QString& text, int exitCode) {
  QMessageBox box(exitCode == 0 ? QMessageBox::Information : QMessageBox::Warning, QString(),
                  "<pre>" + text.toHtmlEscaped() + "</pre>", QMessageBox::Ok);
  box.setTextFormat(Qt::RichText);
  box.exec();
}

}  // namespace corvane::viewer
