#pragma once

#include <QAbstractScrollArea>
#include <QFrame>
#include <QLabel>
#include <QPushButton>

namespace corvane::map {

// A line of text over the map, centred at its upper or lower edge, inside of the coordinates, with
// an optional button. Hidden while there is nothing to say.
class MapNotice : public QFrame {
 public:
  // Calm: light on dark. Warning: dark on amber. Both are readable on any picture.
  enum class Kind { Calm, Warning };

  MapNotice(QAbstractScrollArea& map, Qt::Edge edge, const QString& button = {});

  // An empty text hides it.
  void Show(const QString& text, Kind kind, const QString& button = {});
  // Fades after some seconds.
  void ShowBriefly(const QString& text);

  // The controls. The notice owns them. Without a button's text in the constructor there is none.
  QLabel* lblText;
  QPushButton* btnAct = nullptr;

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void Place();

  const QWidget* myViewport;
  Qt::Edge myEdge;
};

}  // namespace corvane::map
