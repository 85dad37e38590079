#include "map/sharing.h"

#include <utility>

#include <QDragEnterEvent>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QMimeData>
#include <QUrl>

#include "framework/text.h"
#include "framework/visible_text.h"
#include "map/places/place_file.h"
#include "map/places/place_link.h"
#include "map/share_dialog.h"

namespace corvane::map {
namespace {

constexpr QLatin1String kSuffix(".corvane");

// The file or link that is dropped; empty if it is something else.
QString PlaceIn(const QMimeData& data) {
  const QUrl url = data.urls().value(0);
  if (url.isLocalFile() && url.path().endsWith(kSuffix, Qt::CaseInsensitive))
    return url.toLocalFile();
  const QString text = url.isEmpty() ? data.text().trimmed() : url.toString(QUrl::FullyEncoded);
  return IsPlaceLink(text) ? text : QString();
}

PlaceResult ReadPlaceFile(const QString& path) {
  QFile file(path);
  // Opening a pipe would block until it has a writer.
  if (QFileInfo(path).isFile() && file.open(QFile::ReadOnly))
    return FromPlaceFile(file.read(kMaxPlaceFile + 1));
  const QString why = QFileInfo(path).isFile() ? file.errorString() : Sharing::tr("no such file");
  return {{}, Sharing::tr("%1 cannot be opened: %2").arg(path, why)};
}

}  // namespace

Sharing::Sharing(client::Connection& connection, Settings& settings, Connector& connector,
                 FacetPictures& pictures, LandmarkBoard& landmarks, MessagesPane& messages,
                 QWidget& window, QString pictureFolder)
    : myConnection(connection),
      mySettings(settings),
      myConnector(connector),
      myPictures(pictures),
      myLandmarks(landmarks),
      myMessages(messages),
      myWindow(window),
      myPictureFolder(std::move(pictureFolder)) {
  myConnector.PlaceJoined = [this](const Place& place) { TakeContent(place); };
  myWindow.setAcceptDrops(true);
  myWindow.installEventFilter(this);
}

std::optional<RecentServer> Sharing::Server() const {
  using State = client::Connection::State;
  const State state = myConnection.CurrentState();
  if (state == State::Online || state == State::Waiting) {
    const client::Destination& where = myConnection.CurrentDestination();
    return RecentServer{where.host,
                        where.port,
                        DisplayText(where.account.network),
                        DisplayText(where.account.userName),
                        QByteArray::fromStdString(where.account.passwordDigest),
                        where.tls.has_value(),
                        where.tls ? where.tls->fingerprint : QByteArray()};
  }
  const PlaceKey& current = mySettings.CurrentPlace();
  for (const RecentServer& server : mySettings.RecentServers()) {
    if (server.host == current.host && server.port == current.port &&
        server.network == current.network) {
      return server;
    }
  }
  return std::nullopt;
}

void Sharing::Share() {
  const std::optional<RecentServer> server = Server();
  if (!server) return;
  QStringList leftOut;
  Place place{CheckedHost(server->host), server->port,   server->isEncrypted, server->fingerprint,
              server->network,           server->digest, Pictures(leftOut),   myLandmarks.All()};
  (new ShareDialog(std::move(place), leftOut, myWindow))->open();
}

QList<PlacePicture> Sharing::Pictures(QStringList& leftOut) const {
  QList<PlacePicture> pictures;
  qsizetype left = kMaxPlaceFile;
  for (const int facet : mySettings.Pictured()) {
    const MapPicture picture = mySettings.PictureOf(facet);
    QFile file(picture.path);
    QString why;
    QByteArray bytes;
    if (picture.kind == MapPicture::Kind::Tiles) {
      why = tr("a folder of tiles");
    } else if (!QFileInfo(picture.path).isFile() || !file.open(QFile::ReadOnly)) {
      why = tr("its file cannot be read");
    } else if (file.size() > left || pictures.size() == Place::kMaxPictures) {
      why = tr("too much for a file");
    } else if (bytes = file.readAll(); ImageSuffix(bytes).isEmpty()) {
      why = tr("neither PNG nor JPEG");
    }
    if (!why.isEmpty()) {
      leftOut.append(tr("Not shared: the picture of facet %1, %2").arg(facet).arg(why));
      continue;
    }
    left -= bytes.size();
    pictures.append(
        {facet, QFileInfo(picture.path).fileName(), bytes, picture.corner, picture.unitsPerPixel});
  }
  return pictures;
}

void Sharing::AskForFile() {
  const QString path = QFileDialog::getOpenFileName(&myWindow, tr("Open Place"), {},
                                                    tr("Places (*%1)").arg(kSuffix));
  if (!path.isEmpty()) Open(path);
}

void Sharing::Open(const QString& fileOrLink) {
  myWindow.setWindowState(myWindow.windowState() & ~Qt::WindowMinimized);
  myWindow.raise();
  myWindow.activateWindow();
  // Links take the same way, so that of several places the last one is shown.
  myBackground.Run(
      [fileOrLink] {
        return IsPlaceLink(fileOrLink) ? FromPlaceLink(fileOrLink) : ReadPlaceFile(fileOrLink);
      },
      [this](const PlaceResult& result) {
        result.place ? myConnector.Offer(*result.place) : ShowError(result.error);
      });
}

void Sharing::TakeContent(const Place& place) {
  if (!myLandmarks.Add(place.landmarks))
    myMessages.Add(tr("The landmarks of the place are not used: there would be too many."));
  for (const PlacePicture& picture : place.pictures) {
    const PlaceKey key = mySettings.CurrentPlace();
    const QString used = mySettings.PictureOf(picture.facet).path;
    const MapPicture taken{MapPicture::Kind::Image, {}, picture.corner, picture.unitsPerPixel};
    myBackground.Run([picture, key, used,
                      folder = myPictureFolder] { return CopyPicture(picture, key, folder, used); },
                     [this, key, facet = picture.facet, taken](const PictureCopy& copy) {
                       TakePicture(key, facet, taken, copy);
                     });
  }
}

void Sharing::TakePicture(const PlaceKey& place, int facet, MapPicture picture,
                          const PictureCopy& copy) {
  picture.path = copy.path;
  if (copy.error.isEmpty()) return myPictures.Set(place, facet, picture);
  myMessages.Add(tr("The picture of facet %1 is not used: %2").arg(facet).arg(copy.error));
}

void Sharing::ShowError(const QString& text) {
  if (!myError) {
    myError =
        new QMessageBox(QMessageBox::Warning, tr("Open Place"), {}, QMessageBox::Ok, &myWindow);
    myError->setObjectName(QStringLiteral("PlaceError"));
    myError->setAttribute(Qt::WA_DeleteOnClose);
    myError->setTextFormat(Qt::PlainText);
  }
  myError->setText(VisibleText(TextFromDisplay(text)));
  myError->open();
}

bool Sharing::eventFilter(QObject* window, QEvent* event) {
  if (event->type() != QEvent::DragEnter && event->type() != QEvent::Drop)
    return QObject::eventFilter(window, event);
  auto* drop = static_cast<QDropEvent*>(event);
  const QString place = PlaceIn(*drop->mimeData());
  if (place.isEmpty()) return QObject::eventFilter(window, event);
  drop->acceptProposedAction();
  if (event->type() == QEvent::Drop) Open(place);
  return true;
}

}  // namespace corvane::map
