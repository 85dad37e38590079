#pragma once

#include <functional>

#include <QCoreApplication>
#include <QDialog>
#include <QDoubleSpinBox>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>

#include "map/pictures/map_picture.h"

namespace corvane::map {

// Asks for the picture of a facet and its position on the map. Deletes itself when closed.
class PictureDialog : public QDialog {
  Q_DECLARE_TR_FUNCTIONS(corvane::map::PictureDialog)

 public:
  PictureDialog(int facet, const MapPicture& picture, QWidget& owner);

  std::function<void(const MapPicture&)> Chosen;

  // The controls, in tab order. The dialog owns them.
  QRadioButton* rdoNone;
  QRadioButton* rdoImage;
  QRadioButton* rdoTiles;
  QLineEdit* txtPath;
  QPushButton* btnBrowse;
  QDoubleSpinBox* spnLeft;
  QDoubleSpinBox* spnTop;
  QDoubleSpinBox* spnScale;
  QPushButton* btnOK;
  QPushButton* btnCancel;

 private:
  void LayOut();
  void Check();
  void Browse();
  void Choose();
};

}  // namespace corvane::map
