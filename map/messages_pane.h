#pragma once

#include <deque>

#include <QCoreApplication>
#include <QPlainTextEdit>
#include <QTime>
#include <QTimer>

namespace corvane::map {

// What the server and the program have said, a line each with its time; the last kMaxLines of them.
// However fast lines come, few are shown at once.
class MessagesPane : public QPlainTextEdit {
  Q_DECLARE_TR_FUNCTIONS(corvane::map::MessagesPane)

 public:
  static constexpr int kMaxLines = 1000;

  explicit MessagesPane(QWidget* parent);

  // Control characters in the text are written out.
  void Add(const QString& text);

 private:
  void Flush();

  struct Line {
    QTime time;
    QString text;
  };

  std::deque<Line> myWaiting;
  QTimer myTimer;
};

}  // namespace corvane::map
