#include "map/place_commands.h"

#include <algorithm>
#include <string>
#include <utility>

#include <QClipboard>
#include <QGuiApplication>

#include "framework/visible_text.h"
#include "map/place_picker.h"
#include "map/text_dialog.h"

namespace corvane::map {

PlaceCommands::PlaceCommands(MarkerBoard& board, MapView& map, MapActions& actions,
                             QMainWindow& owner)
    : myBoard(board), myMap(map), myActions(actions), myOwner(owner) {
  QObject::connect(actions.actGoTo, &QAction::triggered, &owner, [this] { Ask(); });
  QObject::connect(actions.actCopyPlace, &QAction::triggered, &owner,
                   [this] { Copy(myMenuPlace.toPoint(), myMap.Scene()->Facet()); });
  map.PlaceMenuRequested = [this](QPointF place, QPoint globalPosition) {
    myMenuPlace = WholePlace(place);
    myActions.mnuPlace->popup(globalPosition);
  };
  map.CrowdRequested = [this](const auto& members, QPoint globalPosition) {
    ListCrowd(members, globalPosition);
  };
}

void PlaceCommands::Ask() {
  auto* dialog = new TextDialog(tr("Go to Coordinates"),
                                tr("Type X and Y, and the facet if it is another one."),
                                tr("&Coordinates:"), tr("&Go"), myOwner);
  dialog->txtText->setPlaceholderText(tr("1200, 845 or 1200, 845, 2"));
  dialog->FaultOf = [](const QString& text) {
    return ParseCoordinates(text)
               ? QString()
               : tr("\"%1\" is no place on the map. Write X and Y as whole numbers, for example "
                    "1200, 845, or with the facet: 1200, 845, 2.")
                     .arg(text);
  };
  dialog->Confirmed = [this](const QString& text) {
    const std::optional<Coordinates> place = ParseCoordinates(text);
    if (place) myMap.ShowPlace(place->at, place->facet.value_or(myMap.Scene()->Facet()));
  };
  dialog->open();
}

void PlaceCommands::ListCrowd(const std::vector<const client::Member*>& members,
                              QPoint globalPosition) {
  constexpr qsizetype kMaxListed = 40;
  std::vector<std::pair<QString, std::string>> names;  // shown, meant
  names.reserve(members.size());
  for (const client::Member* member : members)
    names.emplace_back(VisibleText(member->name, kMaxNameLength), member->name);
  std::ranges::sort(names, [](const auto& left, const auto& right) {
    return left.first.compare(right.first, Qt::CaseInsensitive) < 0;
  });
  auto* menu = new QMenu(&myOwner);
  menu->setAttribute(Qt::WA_DeleteOnClose);
  for (const auto& [shown, name] : names) {
    if (menu->actions().size() == kMaxListed) {
      menu->addAction(tr("and %1 more").arg(names.size() - kMaxListed))->setEnabled(false);
      break;
    }
    // The member may leave while the menu is open.
    QObject::connect(menu->addAction(QString(shown).replace('&', QStringLiteral("&&"))),
                     &QAction::triggered, &myOwner, [this, meant = name] {
                       const client::Member* member = myBoard.MemberNamed(meant);
                       if (member != nullptr) myMap.MemberClicked(*member);
                     });
  }
  menu->popup(globalPosition);
}

void PlaceCommands::Copy(QPoint place, int facet) {
  QGuiApplication::clipboard()->setText(
      QStringLiteral("%1, %2").arg(CoordinatesText(place.x(), place.y())).arg(facet));
}

}  // namespace corvane::map
