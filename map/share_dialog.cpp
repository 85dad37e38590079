#include "map/share_dialog.h"

#include <utility>

#include <QApplication>
#include <QClipboard>
#include <QDir>
#include <QFileDialog>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHostAddress>
#include <QRegularExpression>
#include <QSaveFile>
#include <QVBoxLayout>

#include "map/places/place_file.h"
#include "map/places/place_link.h"

namespace corvane::map {
namespace {

constexpr int kLinkLetters = 72;

QLabel* Hint(const QString& text, QWidget* parent) {
  auto* label = new QLabel(text, parent);
  label->setTextFormat(Qt::PlainText);
  label->setWordWrap(true);
  return label;
}

}  // namespace

ShareDialog::ShareDialog(Place place, const QStringList& leftOut, QWidget& owner)
    : QDialog(&owner),
      txtLink(new QLineEdit(ToPlaceLink(place), this)),
      btnCopy(new QPushButton(tr("&Copy"), this)),
      chkPictures(new QCheckBox(tr("&Pictures (%1)").arg(place.pictures.size()), this)),
      chkLandmarks(new QCheckBox(tr("&Landmarks (%1)").arg(place.landmarks.size()), this)),
      chkPassword(new QCheckBox(tr("Pass&word of the network (as its digest)"), this)),
      btnSave(new QPushButton(tr("&Save as File..."), this)),
      btnClose(new QPushButton(tr("Close"), this)),
      lblMessage(Hint({}, this)),
      myPlace(std::move(place)) {
  setObjectName(QStringLiteral("ShareDialog"));
  setWindowTitle(tr("Share This Place"));
  setAttribute(Qt::WA_DeleteOnClose);
  txtLink->setReadOnly(true);
  txtLink->setAccessibleName(tr("Link"));
  txtLink->setCursorPosition(0);
  txtLink->setMinimumWidth(kLinkLetters * fontMetrics().averageCharWidth());
  btnCopy->setDefault(true);
  chkPictures->setEnabled(!myPlace.pictures.isEmpty());
  chkPictures->setChecked(chkPictures->isEnabled());
  chkLandmarks->setEnabled(!myPlace.landmarks.isEmpty());
  chkLandmarks->setChecked(chkLandmarks->isEnabled());
  chkPassword->setEnabled(!myPlace.digest.isEmpty());
  LayOut(leftOut);
  connect(btnCopy, &QPushButton::clicked, this, [this] {
    QApplication::clipboard()->setText(txtLink->text());
    lblMessage->setText(tr("The link is in the clipboard."));
  });
  connect(btnSave, &QPushButton::clicked, this, [this] { AskForPath(); });
  connect(btnClose, &QPushButton::clicked, this, [this] { reject(); });
  btnCopy->setFocus();
}

void ShareDialog::LayOut(const QStringList& leftOut) {
  auto* row = new QHBoxLayout;
  row->addWidget(txtLink);
  row->addWidget(btnCopy);
  auto* link = new QGroupBox(tr("A Link"), this);
  auto* linkColumn = new QVBoxLayout(link);
  linkColumn->addLayout(row);
  linkColumn->addWidget(
      Hint(tr("It names the server and the network, and never the password."), this));
  if (myPlace.host == "localhost" || QHostAddress(myPlace.host).isLoopback()) {
    linkColumn->addWidget(
        Hint(tr("For others %1 is their own computer. Connect by a name or address "
                "that they can reach, then share.")
                 .arg(myPlace.host),
             this));
  }

  auto* file = new QGroupBox(tr("A File"), this);
  auto* fileColumn = new QVBoxLayout(file);
  fileColumn->addWidget(Hint(tr("It holds the same, and:"), this));
  fileColumn->addWidget(chkPictures);
  if (!leftOut.isEmpty()) fileColumn->addWidget(Hint(leftOut.join('\n'), this));
  fileColumn->addWidget(chkLandmarks);
  fileColumn->addWidget(chkPassword);
  fileColumn->addWidget(Hint(
      tr("The digest does not reveal the password, but lets in anybody who gets the file."), this));
  fileColumn->addWidget(btnSave, 0, Qt::AlignLeft);

  auto* buttons = new QHBoxLayout;
  buttons->addWidget(lblMessage, 1);
  buttons->addWidget(btnClose);
  auto* column = new QVBoxLayout(this);
  column->addWidget(link);
  column->addWidget(file);
  column->addLayout(buttons);
}

void ShareDialog::AskForPath() {
  static const QRegularExpression special(QStringLiteral("[^\\w ]"),
                                          QRegularExpression::UseUnicodePropertiesOption);
  QString name = myPlace.network.left(60).replace(special, QStringLiteral("_"));
  QFileDialog dialog(this, tr("Save Place"), QDir::home().filePath(name), tr("Places (*.corvane)"));
  dialog.setAcceptMode(QFileDialog::AcceptSave);
  dialog.setDefaultSuffix(QStringLiteral("corvane"));
  if (dialog.exec() == QDialog::Accepted) Save(dialog.selectedFiles().value(0));
}

void ShareDialog::Save(const QString& path) {
  Place place = myPlace;
  if (!chkPictures->isChecked()) place.pictures.clear();
  if (!chkLandmarks->isChecked()) place.landmarks.clear();
  if (!chkPassword->isChecked()) place.digest.clear();
  const QByteArray bytes = ToPlaceFile(place);
  if (bytes.size() > kMaxPlaceFile) {
    lblMessage->setText(tr("The file would be larger than %1 MiB. Share fewer or smaller pictures.")
                            .arg(kMaxPlaceFile >> 20));
    return;
  }
  QSaveFile file(path);
  bool isSaved = file.open(QSaveFile::WriteOnly);
  if (!place.digest.isEmpty()) file.setPermissions(QFile::ReadOwner | QFile::WriteOwner);
  isSaved = isSaved && file.write(bytes) == bytes.size() && file.commit();
  lblMessage->setText(isSaved ? tr("The file is saved.")
                              : tr("The file cannot be saved: %1").arg(file.errorString()));
}

}  // namespace corvane::map
