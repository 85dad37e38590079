#include "map/picture_dialog.h"

#include <QFileDialog>
#include <QFileInfo>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QImageReader>
#include <QLabel>
#include <QVBoxLayout>

namespace corvane::map {
namespace {

QDoubleSpinBox* NumberField(double value, double min, double max, int decimals, QWidget* parent) {
  auto* field = new QDoubleSpinBox(parent);
  field->setRange(min, max);
  field->setDecimals(decimals);
  field->setValue(value);
  return field;
}

}  // namespace

PictureDialog::PictureDialog(int facet, const MapPicture& picture, QWidget& owner)
    : QDialog(&owner),
      rdoNone(new QRadioButton(tr("&No picture, a grid"), this)),
      rdoImage(new QRadioButton(tr("An &image"), this)),
      rdoTiles(new QRadioButton(tr("A folder of &tiles, z/x/y"), this)),
      txtPath(new QLineEdit(picture.path, this)),
      btnBrowse(new QPushButton(tr("&Browse..."), this)),
      spnLeft(NumberField(picture.corner.x(), -1e9, 1e9, 2, this)),
      spnTop(NumberField(picture.corner.y(), -1e9, 1e9, 2, this)),
      spnScale(NumberField(picture.unitsPerPixel, 0.0001, 10'000, 4, this)),
      btnOK(new QPushButton(tr("OK"), this)),
      btnCancel(new QPushButton(tr("Cancel"), this)) {
  setObjectName(QStringLiteral("PictureDialog"));
  setWindowTitle(tr("Picture of Facet %1").arg(facet));
  setAttribute(Qt::WA_DeleteOnClose);
  rdoNone->setChecked(picture.kind == MapPicture::Kind::None);
  rdoImage->setChecked(picture.kind == MapPicture::Kind::Image);
  rdoTiles->setChecked(picture.kind == MapPicture::Kind::Tiles);
  txtPath->setAccessibleName(tr("File or folder"));
  txtPath->setMinimumWidth(320);
  LayOut();
  for (QRadioButton* choice : {rdoNone, rdoImage, rdoTiles}) {
    if (choice->isChecked()) choice->setFocus();
    connect(choice, &QRadioButton::toggled, this, [this] { Check(); });
  }
  connect(txtPath, &QLineEdit::textChanged, this, [this] { Check(); });
  connect(btnBrowse, &QPushButton::clicked, this, [this] { Browse(); });
  connect(btnOK, &QPushButton::clicked, this, [this] { Choose(); });
  connect(btnCancel, &QPushButton::clicked, this, [this] { reject(); });
  Check();
}

void PictureDialog::LayOut() {
  auto* path = new QHBoxLayout;
  path->addWidget(txtPath);
  path->addWidget(btnBrowse);
  auto* form = new QFormLayout;
  form->addRow(tr("&Left edge at X:"), spnLeft);
  form->addRow(tr("To&p edge at Y:"), spnTop);
  form->addRow(tr("Map &units per pixel:"), spnScale);
  auto* hint = new QLabel(tr("Of a folder, the pixels are those of its finest tiles."), this);
  auto* buttons = new QHBoxLayout;
  buttons->addStretch();
  buttons->addWidget(btnOK);
  buttons->addWidget(btnCancel);
  btnOK->setDefault(true);
  auto* column = new QVBoxLayout(this);
  for (QRadioButton* choice : {rdoNone, rdoImage, rdoTiles})
    column->addWidget(choice);
  column->addLayout(path);
  column->addLayout(form);
  column->addWidget(hint);
  column->addLayout(buttons);
  column->setSizeConstraint(QLayout::SetFixedSize);
}

void PictureDialog::Check() {
  const bool hasPicture = !rdoNone->isChecked();
  for (QWidget* field :
       std::initializer_list<QWidget*>{txtPath, btnBrowse, spnLeft, spnTop, spnScale}) {
    field->setEnabled(hasPicture);
  }
  btnOK->setEnabled(!hasPicture || !txtPath->text().isEmpty());
}

void PictureDialog::Browse() {
  QString types;
  for (const QByteArray& format : QImageReader::supportedImageFormats())
    types += " *." + QString::fromLatin1(format);
  const QString path =
      rdoTiles->isChecked()
          ? QFileDialog::getExistingDirectory(this, tr("Folder of Tiles"), txtPath->text())
          : QFileDialog::getOpenFileName(this, tr("Picture"), txtPath->text(),
                                         tr("Pictures (%1)").arg(types.trimmed()));
  if (!path.isEmpty()) txtPath->setText(path);
}

void PictureDialog::Choose() {
  MapPicture picture;
  if (!rdoNone->isChecked()) {
    picture.kind = rdoImage->isChecked() ? MapPicture::Kind::Image : MapPicture::Kind::Tiles;
    // Absolute, because it is remembered, as with --map.
    picture.path = QFileInfo(txtPath->text()).absoluteFilePath();
    picture.corner = {spnLeft->value(), spnTop->value()};
    picture.unitsPerPixel = spnScale->value();
  }
  if (Chosen) Chosen(picture);
  accept();
}

}  // namespace corvane::map
