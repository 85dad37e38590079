#include "map/alarm_bell.h"

#include <utility>

#include <QApplication>

#include "map/alarms/alarm_text.h"
#include "map/alarms_dialog.h"
#include "map/circle_art.h"
#include "map/text_dialog.h"

namespace corvane::map {
namespace {

const QString kAlarms = QStringLiteral("alarms");

// Many desktops read a notification as markup, which may load pictures. Names come from strangers.
QString WithoutMarkup(QString text) {
  return text.replace('<', QChar(0x2039)).replace('&', QChar(0xff06));
}

}  // namespace

AlarmBell::AlarmBell(client::Connection& connection, Settings& settings, MapView& map,
                     PlacePicker& picker, MessagesPane& messages, QWidget& owner)
    : mySettings(settings),
      myMap(map),
      myPicker(picker),
      myMessages(messages),
      myOwner(owner),
      myWatch(connection.Others(), [] { return client::Clock::now(); }) {
  myWatch.IsFollowed = [this](const client::Member& member) { return myMap.Followed() == &member; };
  myWatch.Raised = [this](const Alarm& alarm) { Take(alarm); };
  QObject::connect(&myTick, &QTimer::timeout, &myTick, [this] {
    if (myWatch.Advance()) myMap.Refresh();
  });
  myTick.start(std::chrono::seconds(1));
  myPause.setSingleShot(true);
  QObject::connect(&myPause, &QTimer::timeout, &myPause, [this] { Ring(); });
  myPlaceChanged = settings.PlaceChanged.Connect([this] {
    myWatch.ForgetGone();
    ReadRules();
  });
  ReadRules();
}

void AlarmBell::Take(const Alarm& alarm) {
  if (myLines.size() < kMaxLines) {
    myLines.append(SentenceOf(alarm, myWatch.Rules()));
  } else {
    ++myMore;
  }
  if (!myPause.isActive()) myPause.start(0);
}

void AlarmBell::Ring() {
  if (myLines.isEmpty()) return;
  QStringList lines = std::exchange(myLines, {});
  const qsizetype more = std::exchange(myMore, 0);
  if (more > 0) lines.append(more == 1 ? tr("1 more alarm") : tr("%1 more alarms").arg(more));
  for (const QString& line : lines)
    myMessages.Add(tr("Alarm: %1").arg(line));
  myPause.start(kPause);
  if (myIsSilenced) return;
  const AlarmRules& rules = myWatch.Rules();
  if (rules.alertsWindow) QApplication::alert(&myOwner);
  if (rules.beeps) QApplication::beep();
  if (rules.notifies) Notify(lines);
}

void AlarmBell::Notify(const QStringList& lines) {
  if (!QSystemTrayIcon::isSystemTrayAvailable()) return;
  if (!myTray) {
    myTray = std::make_unique<QSystemTrayIcon>(QApplication::windowIcon());
    myTray->setToolTip(tr("Corvane Map"));
    const auto show = [this] {
      myOwner.setWindowState(myOwner.windowState() & ~Qt::WindowMinimized);
      myOwner.show();
      myOwner.raise();
      myOwner.activateWindow();
    };
    QObject::connect(myTray.get(), &QSystemTrayIcon::messageClicked, &myOwner, show);
    QObject::connect(myTray.get(), &QSystemTrayIcon::activated, &myOwner, show);
    myTray->show();
  }
  myTray->showMessage(tr("Corvane Map"), WithoutMarkup(lines.join('\n')), QSystemTrayIcon::Warning);
}

void AlarmBell::ShowOn(MapScene& scene) {
  scene.BackgroundDrawn = [this, &scene](QPainter& painter, const QRectF& part) {
    QList<AlarmCircle> circles = myWatch.Rules().circles;
    if (myPicker.Circle()) circles.append(*myPicker.Circle());
    for (const AlarmCircle& circle : circles) {
      if (circle.facet == scene.Facet()) PaintCircle(painter, part, circle);
    }
  };
}

void AlarmBell::ReadRules() {
  myWatch.SetRules(AlarmRules::FromJson(mySettings.Stored(kAlarms), mySettings.Circles()));
  myMap.resetCachedContent();
  myMap.Refresh();
}

void AlarmBell::SetRules(const AlarmRules& rules) {
  mySettings.Store(kAlarms, rules.ToJson());
  mySettings.SetCircles(rules.CirclesToJson());
  if (!rules.notifies) myTray.reset();
  ReadRules();
}

void AlarmBell::AskForRules() {
  const QRectF part = myMap.mapToScene(myMap.viewport()->rect()).boundingRect();
  const AlarmCircle proposal{NextName(), myMap.Scene()->Facet(), part.center().toPoint(),
                             std::max(1, static_cast<int>(part.height() / 8))};
  auto* dialog = new AlarmsDialog(myWatch.Rules(), proposal,
                                  QSystemTrayIcon::isSystemTrayAvailable(), myOwner);
  dialog->Confirmed = [this](const AlarmRules& rules) { SetRules(rules); };
  dialog->DrawRequested = [this] { DrawCircle(); };
  dialog->open();
}

void AlarmBell::DrawCircle() {
  if (myWatch.Rules().circles.size() >= AlarmRules::kMaxCircles) {
    myMessages.Add(tr("There are %1 circles already. \"Alarms...\" deletes them.")
                       .arg(AlarmRules::kMaxCircles));
    return;
  }
  myPicker.StartCircle([this](const AlarmCircle& circle) { AskForName(circle); });
}

void AlarmBell::AskForName(const AlarmCircle& circle) {
  auto* dialog =
      new TextDialog(tr("New Circle"), tr("An alarm is raised when somebody enters the circle."),
                     tr("&Name:"), tr("Add"), myOwner);
  dialog->txtText->setMaxLength(AlarmCircle::kMaxName);
  dialog->txtText->setText(NextName());
  dialog->txtText->selectAll();
  dialog->Confirmed = [this, circle](const QString& name) {
    AlarmRules rules = myWatch.Rules();
    rules.circles.append(circle);
    rules.circles.back().name = name;
    // A user who draws a circle wants its alarms.
    AlarmFor& who = rules.For(AlarmKind::Circle);
    if (who == AlarmFor::Nobody) who = AlarmFor::Everybody;
    SetRules(rules);
  };
  QObject::connect(dialog, &QDialog::finished, &myPicker, [this] { myPicker.Cancel(); });
  dialog->open();
}

QString AlarmBell::NextName() const {
  return tr("Circle %1").arg(myWatch.Rules().circles.size() + 1);
}

}  // namespace corvane::map
