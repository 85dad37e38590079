#include "map/messages_pane.h"

#include <chrono>

#include "framework/text.h"
#include "framework/visible_text.h"

namespace corvane::map {
namespace {

constexpr std::chrono::milliseconds kPause{100};
constexpr qsizetype kLinesAtOnce = 100;

}  // namespace

MessagesPane::MessagesPane(QWidget* parent) : QPlainTextEdit(parent) {
  setObjectName(QStringLiteral("txtMessages"));
  setAccessibleName(tr("Messages"));
  setReadOnly(true);
  // The text can be read by keys with a caret; Tab moves the focus on.
  setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
  setTabChangesFocus(true);
  setMaximumBlockCount(kMaxLines);
  myTimer.setSingleShot(true);
  myTimer.setInterval(kPause);
  connect(&myTimer, &QTimer::timeout, this, [this] { Flush(); });
}

void MessagesPane::Add(const QString& text) {
  if (myWaiting.size() >= kMaxLines) myWaiting.pop_front();
  myWaiting.push_back({QTime::currentTime(), text});
  if (!myTimer.isActive()) myTimer.start();
}

void MessagesPane::Flush() {
  QStringList lines;
  for (; !myWaiting.empty() && lines.size() < kLinesAtOnce; myWaiting.pop_front()) {
    const Line& line = myWaiting.front();
    lines.append('[' + line.time.toString(QStringLiteral("HH:mm:ss")) + "] " +
                 VisibleText(TextFromDisplay(line.text.trimmed())));
  }
  appendPlainText(lines.join('\n'));
  if (!myWaiting.empty()) myTimer.start();
}

}  // namespace corvane::map
