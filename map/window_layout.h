#pragma once

#include <memory>

#include <QCoreApplication>
#include <QMainWindow>
#include <QObject>
#include <QSplitter>

#include "map/map_actions.h"
#include "map/map_notice.h"
#include "map/map_view.h"
#include "map/members_panel.h"
#include "map/messages_pane.h"
#include "map/settings.h"

namespace corvane::map {

// Arranges the list of members and the messages around the map, shows or hides them, and switches
// the compact view, "Always on Top" and the opacity. The settings keep all but the compact view.
//
// The map has at least kMapShare of the window: where they leave it less, the messages and then the
// list are hidden. A choice of the user, a dragged edge or a part opened nevertheless, holds in
// windows that are at least as large as the one it was made in.
class WindowLayout : public QObject {
  Q_DECLARE_TR_FUNCTIONS(corvane::map::WindowLayout)

 public:
  static constexpr double kMapShare = 0.7;

  // Becomes the window's central widget, with the three views. Borrows all; the views then belong
  // to it.
  WindowLayout(QMainWindow& window, MapView& map, MembersPanel& members, MessagesPane& messages,
               const MapActions& actions, Settings& settings);
  WindowLayout(const WindowLayout&) = delete;
  WindowLayout& operator=(const WindowLayout&) = delete;

  void Restore();
  void Save();

  bool IsCompact() const { return myActions.actCompact->isChecked(); }
  void EndCompact() const { myActions.actCompact->setChecked(false); }
  // Opens the list if it is closed, and puts the keyboard into the filter.
  void Find();

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  // The list or the messages.
  struct Part {
    QWidget* widget;
    QAction* action;
    bool isWanted = true;
    int size = 0;      // width or height as dragged; 0: automatic
    QSize chosenIn{};  // the window at the time of the user's choice; invalid: none
  };

  void Wire(Part& part, QSplitter& splitter);
  void Open(Part& part, bool isOpen);
  void Fit();
  bool Holds(const Part& part) const;
  void SetCompact(bool isCompact);
  void SetOnTop(bool isOnTop);

  QMainWindow& myWindow;
  MapView& myMap;
  MembersPanel& myPanel;
  const MapActions& myActions;
  Settings& mySettings;
  MapNotice* myHint;
  std::unique_ptr<QSplitter> myRows;
  QSplitter* myColumns;
  Part myMembers;
  Part myMessages;
};

}  // namespace corvane::map
