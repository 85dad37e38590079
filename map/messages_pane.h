#pragma once

#include <deque>

#include <QCoreApplication>
#include <QPlainTextEdit>
#include <QTime>
#include <QTimer>

namespace corvane::map {

// The messages of the server and the program, one line each with its time. Keeps the last
// kMaxLines, and shows at most 100 every 0.1 s, so a flood cannot block the window.
class MessagesPane : public QPlainTextEdit {
  Q_DECLARE_TR_FUNCTIONS(corvane::map::MessagesPane)

 public:
  static constexpr int kMaxLines = 1000;

  explicit MessagesPane(QWidget* parent);

  // Escapes control characters.
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
