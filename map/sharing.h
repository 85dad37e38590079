#pragma once

#include <optional>

#include <QCoreApplication>
#include <QMessageBox>
#include <QObject>
#include <QPointer>
#include <QWidget>

#include "client/connection.h"
#include "map/connector.h"
#include "map/facet_pictures.h"
#include "map/landmark_board.h"
#include "map/messages_pane.h"
#include "map/picture_copy.h"
#include "map/pictures/background.h"
#include "map/places/place.h"
#include "map/settings.h"

namespace corvane::map {

// Places that players give one another: shares the current one, and opens those in files, links and
// what is dropped on the window. Nothing of an opened place is used before the user has agreed to
// it and is logged in.
class Sharing : public QObject {
  Q_DECLARE_TR_FUNCTIONS(corvane::map::Sharing)

 public:
  // Borrows all but the folder, which gets the pictures of places.
  Sharing(client::Connection& connection, Settings& settings, Connector& connector,
          FacetPictures& pictures, LandmarkBoard& landmarks, MessagesPane& messages,
          QWidget& window, QString pictureFolder);

  // Whether there is a server to share: the connected one, or the remembered one of the map.
  bool CanShare() const { return Server().has_value(); }
  void Share();
  void AskForFile();
  // Brings the window to the front, reads the file or link in the background, and shows what it
  // leads to, or why it cannot be opened.
  void Open(const QString& fileOrLink);

  bool eventFilter(QObject* window, QEvent* event) override;

 private:
  std::optional<RecentServer> Server() const;
  // The pictures of the current place; adds a line to `leftOut` for each that cannot be shared.
  QList<PlacePicture> Pictures(QStringList& leftOut) const;
  void TakeContent(const Place& place);
  void TakePicture(const PlaceKey& place, int facet, MapPicture picture, const PictureCopy& copy);
  void ShowError(const QString& text);

  client::Connection& myConnection;
  Settings& mySettings;
  Connector& myConnector;
  FacetPictures& myPictures;
  LandmarkBoard& myLandmarks;
  MessagesPane& myMessages;
  QWidget& myWindow;
  QString myPictureFolder;
  QPointer<QMessageBox> myError;
  Background myBackground;
};

}  // namespace corvane::map
