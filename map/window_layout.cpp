#include "map/window_layout.h"

#include <algorithm>
#include <utility>

#include <QApplication>
#include <QEvent>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMenuBar>
#include <QStatusBar>

namespace corvane::map {
namespace {

// Widths of the list, in digits.
constexpr int kMinListDigits = 17;
constexpr int kListDigits = 34;

int HeightOfTwoLines(const QPlainTextEdit& text) {
  const double margins = 2 * text.document()->documentMargin() + 2 * text.frameWidth();
  // The text's lines are a little higher than the font's.
  return 5 * text.fontMetrics().lineSpacing() / 2 + static_cast<int>(margins);
}

}  // namespace

WindowLayout::WindowLayout(QMainWindow& window, MapView& map, MembersPanel& members,
                           MessagesPane& messages, const MapActions& actions, Settings& settings)
    : myWindow(window),
      myMap(map),
      myPanel(members),
      myActions(actions),
      mySettings(settings),
      myHint(new MapNotice(map, Qt::BottomEdge)),
      myRows(std::make_unique<QSplitter>(Qt::Vertical)),
      myColumns(new QSplitter(Qt::Horizontal)),
      myMembers{&members, actions.actMembers},
      myMessages{&messages, actions.actMessages} {
  myColumns->addWidget(&map);
  myColumns->addWidget(&members);
  myRows->addWidget(myColumns);
  myRows->addWidget(&messages);
  Wire(myMembers, *myColumns);
  Wire(myMessages, *myRows);
  myRows->installEventFilter(this);
  myWindow.setCentralWidget(myRows.get());
  actions.mnuColumns->addActions(members.ColumnActions());
  connect(actions.actCompact, &QAction::toggled, this, [this](bool is) { SetCompact(is); });
  connect(actions.actOnTop, &QAction::toggled, this, [this](bool is) { SetOnTop(is); });
  connect(actions.grpOpacity, &QActionGroup::triggered, this,
          [this](QAction* action) { myWindow.setWindowOpacity(action->data().toInt() / 100.0); });
  myWindow.resize(1180, 760);
}

void WindowLayout::Wire(Part& part, QSplitter& splitter) {
  splitter.setChildrenCollapsible(false);
  splitter.setStretchFactor(0, 1);
  connect(part.action, &QAction::triggered, this, [this, &part](bool is) { Open(part, is); });
  connect(&splitter, &QSplitter::splitterMoved, this, [this, &part, &splitter] {
    part.size = splitter.sizes().last();
    part.chosenIn = myWindow.size();
  });
}

void WindowLayout::Open(Part& part, bool isOpen) {
  part.isWanted = isOpen;
  Fit();
  if (!isOpen || !part.widget->isHidden()) return;
  part.chosenIn = myWindow.size();
  Fit();
}

void WindowLayout::Find() {
  if (IsCompact()) EndCompact();
  if (myPanel.isHidden()) Open(myMembers, true);
  myPanel.fldFilter->setFocus();
  myPanel.fldFilter->selectAll();
}

bool WindowLayout::Holds(const Part& part) const {
  return part.chosenIn.isValid() && part.chosenIn == part.chosenIn.boundedTo(myWindow.size());
}

void WindowLayout::Fit() {
  const QSize room = myRows->size();
  if (IsCompact() || room.isEmpty()) return;
  const int handle = myRows->handleWidth();
  const int digit = myPanel.fontMetrics().horizontalAdvance('0');
  const int lines = HeightOfTwoLines(static_cast<const QPlainTextEdit&>(*myMessages.widget));
  const double area = kMapShare * myWindow.width() * myWindow.height();
  const auto widthBeside = [&](int height) {
    const int least = kMinListDigits * digit;
    if (!myMembers.isWanted) return 0;
    if (Holds(myMembers)) return std::min(std::max(myMembers.size, least), room.width() / 2);
    const int map = static_cast<int>(area / std::max(1, room.height() - height)) + 1;
    const int width = std::min(kListDigits * digit, room.width() - handle - map);
    return width < least ? 0 : width;
  };

  int height = myMessages.isWanted ? lines + handle : 0;
  if (height > 0 && Holds(myMessages))
    height = handle + std::min(std::max(myMessages.size, lines), room.height() / 2);
  int width = widthBeside(height);
  if (!Holds(myMessages) && width == 0) {
    // The list matters more, if there is room for only one.
    width = widthBeside(0);
    if (width > 0 || (room.height() - height) * room.width() < area) height = 0;
  }
  myMessages.widget->setMinimumHeight(lines);
  for (const auto& [part, size] : {std::pair(&myMembers, width), std::pair(&myMessages, height)}) {
    if (size == 0 && part->widget->isAncestorOf(QApplication::focusWidget())) myMap.setFocus();
    part->widget->setVisible(size > 0);
    part->action->setChecked(size > 0);
  }
  myRows->setSizes({room.height() - height, height - handle});
  myColumns->setSizes({room.width() - handle - width, width});
}

bool WindowLayout::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::Resize) Fit();
  return QObject::eventFilter(watched, event);
}

void WindowLayout::SetCompact(bool isCompact) {
  for (QWidget* part :
       {static_cast<QWidget*>(myWindow.menuBar()), static_cast<QWidget*>(myWindow.statusBar()),
        myMembers.widget, myMessages.widget})
    part->setVisible(!isCompact);
  for (QAction* action : {myActions.actMembers, myActions.actMessages})
    action->setEnabled(!isCompact);
  Fit();
  myMap.setFocus();
  if (isCompact) {
    myHint->ShowBriefly(tr("F11 or Esc ends the compact view."));
  } else {
    myHint->hide();
  }
}

// The window has to be made again, and must not lose its place.
void WindowLayout::SetOnTop(bool isOnTop) {
  if (myWindow.windowFlags().testFlag(Qt::WindowStaysOnTopHint) == isOnTop) return;
  const bool wasVisible = myWindow.isVisible();
  const QByteArray place = myWindow.saveGeometry();
  myWindow.setWindowFlag(Qt::WindowStaysOnTopHint, isOnTop);
  myWindow.restoreGeometry(place);
  if (wasVisible) myWindow.show();
}

void WindowLayout::Restore() {
  myWindow.restoreGeometry(mySettings.Stored(QStringLiteral("window")));
  myPanel.SetColumns(mySettings.Stored(QStringLiteral("members")));
  const QJsonObject layout =
      QJsonDocument::fromJson(mySettings.Stored(QStringLiteral("layout"))).object();
  for (const auto& [part, name] :
       {std::pair(&myMembers, "members"), std::pair(&myMessages, "messages")}) {
    const QJsonObject stored = layout[QLatin1String(name)].toObject();
    part->isWanted = stored["open"].toBool(true);
    part->size = stored["size"].toInt();
    const QJsonArray window = stored["window"].toArray();
    if (window.size() == 2) part->chosenIn = {window[0].toInt(), window[1].toInt()};
  }
  myActions.actOnTop->setChecked(layout["onTop"].toBool());
  for (QAction* action : myActions.grpOpacity->actions()) {
    if (action->data().toInt() == layout["opacity"].toInt(100)) action->trigger();
  }
  Fit();
}

void WindowLayout::Save() {
  QJsonObject layout{{"onTop", myActions.actOnTop->isChecked()},
                     {"opacity", myActions.grpOpacity->checkedAction()->data().toInt()}};
  for (const auto& [part, name] :
       {std::pair(&myMembers, "members"), std::pair(&myMessages, "messages")}) {
    QJsonObject stored{{"open", part->isWanted}, {"size", part->size}};
    if (part->chosenIn.isValid())
      stored["window"] = QJsonArray{part->chosenIn.width(), part->chosenIn.height()};
    layout[QLatin1String(name)] = stored;
  }
  mySettings.Store(QStringLiteral("layout"), QJsonDocument(layout).toJson(QJsonDocument::Compact));
  mySettings.Store(QStringLiteral("members"), myPanel.Columns());
  mySettings.Store(QStringLiteral("window"), myWindow.saveGeometry());
}

}  // namespace corvane::map
