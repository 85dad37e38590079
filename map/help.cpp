#include "map/help.h"

#include <utility>
#include <vector>

#include <QApplication>
#include <QDialogButtonBox>
#include <QHeaderView>
#include <QMenu>
#include <QMessageBox>
#include <QTableWidget>
#include <QVBoxLayout>

namespace corvane::map {
namespace {

struct HelpTexts {
  Q_DECLARE_TR_FUNCTIONS(corvane::map::Help)
};

using KeyRows = std::vector<std::pair<QString, QString>>;

KeyRows KeysOf(const QMenuBar& menus) {
  KeyRows rows;
  for (const QAction* title : menus.actions()) {
    for (const QAction* action : title->menu()->actions()) {
      QStringList keys;
      for (const QKeySequence& key : action->shortcuts())
        keys.append(key.toString(QKeySequence::NativeText));
      const QString name = title->text() + QStringLiteral(" > ") + action->text();
      if (!keys.isEmpty())
        rows.emplace_back(keys.join(QStringLiteral(", ")), QString(name).remove('&').remove("..."));
    }
  }
  return rows;
}

KeyRows OtherKeys() {
  return {
      {HelpTexts::tr("Arrow keys, drag"), HelpTexts::tr("Move the map")},
      {HelpTexts::tr("Ctrl+arrow keys"),
       HelpTexts::tr("Move the map while you send your position")},
      {HelpTexts::tr("Wheel, double click"), HelpTexts::tr("Zoom at the pointer")},
      {HelpTexts::tr("Shift and drag"), HelpTexts::tr("Zoom to the box")},
      {HelpTexts::tr("Click"), HelpTexts::tr("Select a member")},
      {HelpTexts::tr("Return, double click in the list"), HelpTexts::tr("Follow a member")},
      {HelpTexts::tr("Shift+F10"), HelpTexts::tr("Menu of the selected member")},
  };
}

}  // namespace

void ShowKeys(QWidget& window, const QMenuBar& menus) {
  auto* dialog = new QDialog(&window);
  dialog->setObjectName(QStringLiteral("KeysDialog"));
  dialog->setAttribute(Qt::WA_DeleteOnClose);
  dialog->setWindowTitle(HelpTexts::tr("Keys"));
  KeyRows rows = KeysOf(menus);
  for (auto& row : OtherKeys())
    rows.push_back(std::move(row));
  auto* table = new QTableWidget(static_cast<int>(rows.size()), 2, dialog);
  table->setAccessibleName(HelpTexts::tr("Keys"));
  table->setHorizontalHeaderLabels({HelpTexts::tr("Key or mouse"), HelpTexts::tr("Does")});
  for (int row = 0; row < table->rowCount(); ++row) {
    const auto& [keys, does] = rows[static_cast<std::size_t>(row)];
    table->setItem(row, 0, new QTableWidgetItem(keys));
    table->setItem(row, 1, new QTableWidgetItem(does));
  }
  table->setEditTriggers(QAbstractItemView::NoEditTriggers);
  table->setSelectionBehavior(QAbstractItemView::SelectRows);
  table->setTabKeyNavigation(false);
  table->setShowGrid(false);
  table->verticalHeader()->hide();
  table->verticalHeader()->setDefaultSectionSize(table->fontMetrics().height() + 6);
  table->horizontalHeader()->setStretchLastSection(true);
  table->resizeColumnsToContents();
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, dialog);
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
