#include "map/help.h"

#include <utility>

#include <QApplication>
#include <QDialogButtonBox>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace corvane::map {
namespace {

struct HelpTexts {
  Q_DECLARE_TR_FUNCTIONS(corvane::map::Help)
};

void AddRow(QTreeWidget& table, const QString& keys, const QString& does) {
  auto* row = new QTreeWidgetItem(&table, {keys, does});
  row->setSizeHint(1, QSize(0, table.fontMetrics().height() + 6));
}

void AddKeysOf(const QMenuBar& menus, QTreeWidget& table) {
  for (const QAction* title : menus.actions()) {
    for (const QAction* action : title->menu()->actions()) {
      const QString keys =
          QKeySequence::listToString(action->shortcuts(), QKeySequence::NativeText);
      QString name = title->text() + QStringLiteral(" > ") + action->text();
      if (!keys.isEmpty()) AddRow(table, keys, name.remove('&').remove(QStringLiteral("...")));
    }
  }
}

void AddOtherKeys(QTreeWidget& table) {
  const std::pair<QString, QString> rows[] = {
      {HelpTexts::tr("Arrow keys, drag"), HelpTexts::tr("Move the map")},
      {HelpTexts::tr("Ctrl+arrow keys"),
       HelpTexts::tr("Move the map while you send your position")},
      {HelpTexts::tr("Wheel, double click"), HelpTexts::tr("Zoom at the pointer")},
      {HelpTexts::tr("Shift and drag"), HelpTexts::tr("Zoom to the box")},
      {HelpTexts::tr("Click"), HelpTexts::tr("Select a member")},
      {HelpTexts::tr("Return, double click in the list"), HelpTexts::tr("Follow a member")},
      {HelpTexts::tr("Shift+F10"), HelpTexts::tr("Menu of the selected member")},
  };
  for (const auto& [keys, does] : rows)
    AddRow(table, keys, does);
}

}  // namespace

void ShowKeys(QWidget& window, const QMenuBar& menus) {
  auto* dialog = new QDialog(&window);
  dialog->setObjectName(QStringLiteral("KeysDialog"));
  dialog->setAttribute(Qt::WA_DeleteOnClose);
  dialog->setWindowTitle(HelpTexts::tr("Keys"));
  auto* table = new QTreeWidget(dialog);
  table->setAccessibleName(HelpTexts::tr("Keys"));
  table->setHeaderLabels({HelpTexts::tr("Key or mouse"), HelpTexts::tr("Does")});
  table->setRootIsDecorated(false);
  table->setUniformRowHeights(true);
  AddKeysOf(menus, *table);
  AddOtherKeys(*table);
  table->resizeColumnToContents(0);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, dialog);
  // Of black lines, also on a dark button.
  buttons->button(QDialogButtonBox::Close)->setIcon({});
  QObject::connect(buttons, &QDialogButtonBox::rejected, dialog, &QDialog::reject);
  auto* column = new QVBoxLayout(dialog);
  column->addWidget(table);
  column->addWidget(buttons);
  const int digit = table->fontMetrics().horizontalAdvance('0');
  dialog->resize(70 * digit, 50 * digit);
  dialog->show();
}

void ShowAbout(QWidget& window) {
  auto* box = new QMessageBox(&window);
  box->setObjectName(QStringLiteral("AboutDialog"));
  box->setAttribute(Qt::WA_DeleteOnClose);
  box->setWindowTitle(HelpTexts::tr("About Corvane Map"));
  box->setIconPixmap(QApplication::windowIcon().pixmap(64));
  box->setText(HelpTexts::tr("Corvane Map %1").arg(QApplication::applicationVersion()));
  box->setInformativeText(HelpTexts::tr(
      "Shows the players of a network of a Corvane server on a map, while they play."));
  box->open();
}

}  // namespace corvane::map
