#pragma once

#include <cstdint>

#include <QByteArray>
#include <QList>
#include <QSettings>
#include <QString>

#include "framework/signal.h"
#include "map/pictures/map_picture.h"
#include "map/places/landmark.h"

namespace corvane::map {

// The server and network that pictures, landmarks and circles of alarms belong to. Letter case does
// not matter.
struct PlaceKey {
  QString host;  // empty: no server yet
  std::uint16_t port = 0;
  QString network;

  bool operator==(const PlaceKey&) const = default;
};

// A server and account that the user has logged in with.
struct RecentServer {
  QString host;
  std::uint16_t port = 12000;
  QString network;
  QString userName;
  // Of the password; empty unless the user wants it remembered.
  QByteArray digest;
  bool isEncrypted = false;
  // SHA-256 of the certificate that the user trusts. Empty if the system's authorities decide.
  QByteArray fingerprint{};

  PlaceKey Key() const { return {host, port, network}; }
};

// The map's settings file, which only its user can read: recent servers, what belongs to each
// network, window layout.
class Settings {
 public:
  static constexpr int kMaxRecent = 10;

  explicit Settings(const QString& file);

  // The most recently used first, at most kMaxRecent.
  QList<RecentServer> RecentServers() const;
  // Puts the server first. Replaces an entry with the same host, port, network and user. Others
  // with the same host and port get its encryption and fingerprint.
  void Remember(const RecentServer& server);
  // Removes the entry with the same host, port, network and user.
  void Forget(const RecentServer& server);

  // The place whose pictures, landmarks and circles the methods below read and write: the most
  // recent server at first. What was stored before there was any server moves to the first one.
  const PlaceKey& CurrentPlace() const { return myPlace; }
  void SetCurrentPlace(const PlaceKey& place);
  Signal<> PlaceChanged;

  MapPicture PictureOf(int facet) const;
  void SetPictureOf(int facet, const MapPicture& picture) { SetPictureOf(myPlace, facet, picture); }
  void SetPictureOf(const PlaceKey& place, int facet, const MapPicture& picture);
  // The facets with a picture, ascending.
  QList<int> Pictured() const;

  QList<Landmark> Landmarks() const;
  void SetLandmarks(const QList<Landmark>& landmarks);

  // As AlarmRules writes them.
  QByteArray Circles() const;
  void SetCircles(const QByteArray& circles);

  // Bytes that a part of the map keeps: a window's layout, a feature's options.
  QByteArray Stored(const QString& name) const;
  void Store(const QString& name, const QByteArray& bytes);

 private:
  void StoreRecent(const QList<RecentServer>& servers);
  void CopyContent(const PlaceKey& place);

  mutable QSettings mySettings;
  PlaceKey myPlace;
};

}  // namespace corvane::map
