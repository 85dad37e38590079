#pragma once

#include <functional>

#include <QCoreApplication>
#include <QDialog>
#include <QDoubleSpinBox>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSpinBox>

#include "map/places/landmark.h"

namespace corvane::map {

// Asks for a landmark's name, icon, colour, note and place. Deletes itself when closed.
class LandmarkDialog : public QDialog {
  Q_DECLARE_TR_FUNCTIONS(corvane::map::LandmarkDialog)

 public:
  LandmarkDialog(const QString& title, const Landmark& landmark, QWidget& owner);

  std::function<void(const Landmark&)> Confirmed;

  // The controls, in tab order. The dialog owns them.
  QLineEdit* txtName;
  QListWidget* lstIcons;
  QPushButton* btnColour;
  QPlainTextEdit* txtNote;
  QDoubleSpinBox* spnX;
  QDoubleSpinBox* spnY;
  QSpinBox* spnFacet;
  QPushButton* btnOK;
  QPushButton* btnCancel;

 private:
  void LayOut();
  void ShowIcons();
  void AskColour();
  void Confirm();

  Landmark myLandmark;
};

}  // namespace corvane::map
