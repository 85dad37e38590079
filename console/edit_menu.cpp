#include "console/edit_menu.h"

#include <QApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMenuBar>
#include <QPlainTextEdit>

#include "console/list_box.h"

namespace corvane {
namespace {

constexpr QKeyCombination Ctrl(Qt::Key key) {
  return QKeyCombination(Qt::CTRL, key);
}

struct Item {
  const char* name;
  const char* caption;  // none: a separator
  QKeyCombination key = Qt::Key_unknown;
};

constexpr Item kItems[] = {{"EditUndo", "&Undo", Ctrl(Qt::Key_Z)},
                           {"UntitledMenu1", nullptr},
                           {"EditCut", "Cu&t", Ctrl(Qt::Key_X)},
                           {"EditCopy", "&Copy", Ctrl(Qt::Key_C)},
                           {"EditPaste", "&Paste", Ctrl(Qt::Key_V)},
                           {"EditClear", "&Delete", Qt::Key_Delete},
                           {"UntitledMenu0", nullptr},
                           {"EditSelectAll", "Select &All", Ctrl(Qt::Key_A)}};

bool IsTextField(const QWidget* widget) {
  return qobject_cast<const QLineEdit*>(widget) != nullptr ||
         qobject_cast<const QPlainTextEdit*>(widget) != nullptr;
}

// Whether the key does anything to the focused widget.
bool HasUse(QKeyCombination key) {
  QWidget* target = QApplication::focusWidget();
  if (const auto* list = dynamic_cast<ListBox*>(target)) {
    if (key.key() == Qt::Key_C) return list->selectionModel()->hasSelection();
    return key.key() == Qt::Key_A && list->selectionMode() == ListBox::ExtendedSelection;
  }
  // Opened by keyboard, the menu leaves the focus on the bar until it closes.
  return IsTextField(target) || qobject_cast<QMenuBar*>(target) != nullptr;
}

void Press(QKeyCombination key) {
  QWidget* target = QApplication::focusWidget();
  if (target == nullptr) return;
  QKeyEvent press(QEvent::KeyPress, key.key(), key.keyboardModifiers());
  // Not through the application, which would first match the item's own shortcut.
  static_cast<QObject*>(target)->event(&press);
}

}  // namespace

void FillEditMenu(QMenu& menu) {
  for (const Item& item : kItems) {
    QAction* action =
        item.caption == nullptr ? menu.addSeparator() : menu.addAction(QString(item.caption));
    action->setObjectName(QLatin1String(item.name));
    if (item.caption == nullptr) continue;
    const QKeyCombination key = item.key;
    if (key.keyboardModifiers() != Qt::NoModifier) action->setShortcut(key);
    QObject::connect(action, &QAction::triggered, &menu, [key] { Press(key); });
    QObject::connect(&menu, &QMenu::aboutToShow, action,
                     [action, key] { action->setEnabled(HasUse(key)); });
    // The shortcuts work even if the menu last showed its items disabled.
    QObject::connect(&menu, &QMenu::aboutToHide, action, [action] { action->setEnabled(true); });
  }
}

}  // namespace corvane
