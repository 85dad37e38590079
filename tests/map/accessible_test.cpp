#include <algorithm>
#include <cmath>
#include <functional>
#include <map>
#include <utility>

#include <QAccessible>
#include <QCheckBox>
#include <QLabel>
#include <QStyleOption>
#include <QTextDocument>

#include "map/certificate_question.h"
#include "map/readable_controls.h"
#include "tests/map/map_fixture.h"

namespace corvane::map {
namespace {

// Goes through a window in the order of Tab. Reports controls that a screen reader cannot name, Alt
// keys that two controls share and, in a dialog, controls to which Tab goes up or to the left.
std::vector<std::string> FaultsOf(QWidget& window) {
  std::vector<std::string> faults;
  std::map<QString, int> keys;
  QRect before;
  for (QWidget* at = window.nextInFocusChain(); at != &window; at = at->nextInFocusChain()) {
    // Qt's inner widgets are parts of a control.
    const QWidget& owner = *at->parentWidget();
    if (at->objectName().startsWith("qt_") || at->focusProxy() != nullptr ||
        owner.inherits("QLineEdit") || owner.inherits("QAbstractItemView"))
      continue;
    QString text = at->property("text").toString();
    const auto add = [&](const std::string& fault) {
      faults.push_back(fault + ": " + at->metaObject()->className() + ' ' + text.toStdString());
    };
    const auto* label = qobject_cast<QLabel*>(at);
    const bool isButton = at->inherits("QAbstractButton");
    const auto count = [&](const QString& of) {
      const QString key = QKeySequence::mnemonic(of).toString();
      if (!key.isEmpty() && ++keys[key] == 2) add("shared key in " + of.toStdString());
    };
    if (isButton || (label != nullptr && label->buddy() != nullptr)) count(text);
    if (at->inherits("QMenuBar")) {
      for (const QAction* action : at->actions())
        count(action->text());
    }
    const QAccessibleInterface& shown = *QAccessible::queryAccessibleInterface(at);
    const QString name = shown.text(QAccessible::Name);
    if (label != nullptr && !Qt::mightBeRichText(text) && !name.contains(text.remove('&')))
      add("no text");
    if (at->focusPolicy() == Qt::NoFocus && !isButton) continue;
    if (name.isEmpty()) add("no name");
    if (shown.role() == QAccessible::NoRole || shown.role() == QAccessible::Client) add("no role");
    if (!window.inherits("QDialog") || !at->isVisible()) continue;
    const QRect place(at->mapTo(&window, QPoint()), at->size());
    const bool isBeside = place.top() <= before.bottom() && before.top() <= place.bottom();
    if (place.bottom() < before.top() || (isBeside && place.right() < before.left()))
      add("wrong order");
    before = place;
  }
  return faults;
}

TEST_F(MapTest, EveryControlHasANameARoleAndAKeyOfItsOwn) {
  const auto bob = Member("Bob", "10,20,0,50,0,0");
  myWindow->map->MemberClicked(*Find("Bob"));
  EXPECT_THAT(FaultsOf(*myWindow), testing::IsEmpty());
  const auto trigger = [this](const char* action) {
    return [this, action] { myWindow->findChild<QAction*>(QLatin1String(action))->trigger(); };
  };
  const std::pair<const char*, std::function<void()>> dialogs[] = {
      {"ConnectDialog", trigger("actConnect")},
      {"PictureDialog", trigger("actPicture")},
      {"TextDialog", trigger("actMessage")},
      {"TextDialog", [this] { myWindow->ShownPings().Ask({}, 0); }},
      {"LandmarkDialog", [this] { myWindow->Marks().AskForNew({}); }},
      {"LandmarkList", trigger("actLandmarkList")},
      {"KickQuestion", trigger("actKick")},
      {"BansDialog", trigger("actBans")},
      {"AlarmsDialog", trigger("actAlarms")},
      {"RecordingsDialog", trigger("actRecordings")},
      {"CertificateQuestion", [this] { (new CertificateQuestion("host", {}, *myWindow))->open(); }},
  };
  for (const auto& [name, open] : dialogs) {
    open();
    EXPECT_THAT(FaultsOf(*Opened<QDialog>(name)), testing::IsEmpty()) << name;
    Opened<QDialog>(name)->close();
  }
}

// Of a grey, as in the contrast ratio of WCAG 2.1.
double Luminance(QRgb of) {
  return 0.05 + std::pow((qGray(of) / 255.0 + 0.055) / 1.055, 2.4);
}

TEST(ReadablePlaceholders, AreReadableInAllPalettes) {
  const ReadablePlaceholders placeholders(*qApp);
  const QPalette before = QApplication::palette();
  for (const QRgb base : {0xffffffff, 0xff1e1e1e, 0xff000000}) {
    QPalette palette(QColor::fromRgb(base), QColor::fromRgb(base));
    palette.setColor(QPalette::PlaceholderText, QColor(0, 0, 0, 128));
    QApplication::setPalette(palette);
    const double contrast =
        Luminance(QApplication::palette().placeholderText().color().rgb()) / Luminance(base);
    EXPECT_GE(std::max(contrast, 1 / contrast), 4.5);
  }
  QApplication::setPalette(before);
}

TEST(VisibleBoxes, StandOutInDarkColours) {
  constexpr QRgb kWindow = 0xff2a2e32;
  VisibleBoxes style;
  QCheckBox box;
  box.setStyle(&style);
  box.setPalette(QPalette(QColor::fromRgb(kWindow), QColor::fromRgb(kWindow)));
  box.adjustSize();
  QStyleOptionButton option;
  option.initFrom(&box);
  const QRect square = style.subElementRect(QStyle::SE_CheckBoxIndicator, &option, &box);
  const QRgb edge = box.grab().toImage().pixel(square.left(), square.center().y());
  EXPECT_GE(Luminance(edge) / Luminance(kWindow), 3);
}

}  // namespace
}  // namespace corvane::map
