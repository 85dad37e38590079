#pragma once

#include <functional>

#include <QCoreApplication>
#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTreeWidget>

#include "framework/signal.h"
#include "map/landmark_board.h"

namespace corvane::map {

// Lists the landmarks of all facets, with a search over names and notes. Stays open beside the map.
// Borrows the board.
class LandmarkList : public QDialog {
  Q_DECLARE_TR_FUNCTIONS(corvane::map::LandmarkList)

 public:
  LandmarkList(LandmarkBoard& board, QWidget& owner);

  // The user has chosen a landmark, or an action for one.
  std::function<void(const Landmark&)> Chosen;
  std::function<void(const Landmark&)> EditRequested;
  std::function<void(const Landmark&)> DeleteRequested;

  // The controls, in tab order. The dialog owns them.
  QLineEdit* txtSearch;
  QTreeWidget* lstLandmarks;
  QPushButton* btnEdit;
  QPushButton* btnDelete;
  QPushButton* btnClose;
  QLabel* lblCount;

 private:
  void LayOut();
  void Fill();
  void Search();
  // The selected landmark; null if there is none.
  const Landmark* Current() const;

  LandmarkBoard& myBoard;
  SignalConnection myChanged;
};

}  // namespace corvane::map
