#include "map/alarms/alarm_text.h"

#include <QCoreApplication>
#include <QStringList>

#include "framework/text.h"
#include "framework/visible_text.h"

namespace corvane::map {
namespace {

constexpr std::size_t kMaxNameShown = 40;

struct AlarmTexts {
  Q_DECLARE_TR_FUNCTIONS(corvane::map::AlarmTexts)
};

QString Visible(const AlarmCircle& circle) {
  return VisibleText(TextFromDisplay(circle.name));
}

}  // namespace

QString SentenceOf(const Alarm& alarm, const AlarmRules& rules) {
  const bool isOwn = alarm.member == nullptr;
  const QString name = isOwn ? QString() : VisibleText(alarm.member->name, kMaxNameShown);
  switch (alarm.kind) {
    case AlarmKind::LowHitPoints: {
      const QString hp = QString::number(alarm.report.hp);
      const QString highest = QString::number(alarm.highest);
      return isOwn ? AlarmTexts::tr("You are down to %1 of %2 hit points").arg(hp, highest)
                   : AlarmTexts::tr("%1 is down to %2 of %3 hit points").arg(name, hp, highest);
    }
    case AlarmKind::Death:
      return isOwn ? AlarmTexts::tr("You are dead") : AlarmTexts::tr("%1 is dead").arg(name);
    case AlarmKind::Battle:
      return isOwn ? AlarmTexts::tr("You are in battle")
                   : AlarmTexts::tr("%1 is in battle").arg(name);
    case AlarmKind::Silence: {
      const QString seconds = QString::number(rules.silence);
      return isOwn ? AlarmTexts::tr("You have sent nothing for %1 seconds").arg(seconds)
                   : AlarmTexts::tr("%1 has sent nothing for %2 seconds").arg(name, seconds);
    }
    case AlarmKind::Circle:
      break;
  }
  const QString circle = Visible(*alarm.circle);
  return isOwn ? AlarmTexts::tr("You have entered %1").arg(circle)
               : AlarmTexts::tr("%1 has entered %2").arg(name, circle);
}

QString StateText(const AlarmState& state, const client::Report& report, const AlarmRules& rules) {
  if (!state.IsAny()) return {};
  QStringList words;
  if (report.isDead) words.append(AlarmTexts::tr("dead"));
  if (report.inBattle && !report.isDead) words.append(AlarmTexts::tr("in battle"));
  if (state.Has(AlarmKind::LowHitPoints)) words.append(AlarmTexts::tr("low HP"));
  if (state.Has(AlarmKind::Silence)) words.append(AlarmTexts::tr("silent"));
  for (qsizetype i = 0; i < rules.circles.size(); ++i) {
    if (state.circles.test(static_cast<std::size_t>(i))) words.append(Visible(rules.circles[i]));
  }
  QString text = words.join(QStringLiteral(", "));
  if (!text.isEmpty()) text[0] = text[0].toUpper();
  return QStringLiteral("! ") + text;
}

}  // namespace corvane::map
