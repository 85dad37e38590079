#pragma once

#include <cstdint>

#include <QByteArray>
#include <QList>
#include <QSettings>
#include <QString>

#include "map/pictures/map_picture.h"

namespace corvane::map {

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
};

// The map's settings file, which only its user can read: recent servers, pictures, window layout.
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

  MapPicture PictureOf(int facet) const;
  void SetPictureOf(int facet, const MapPicture& picture);
  // The facets with a picture, ascending.
  QList<int> Pictured() const;

  // Bytes that a part of the map keeps: a window's layout, a feature's options.
  QByteArray Stored(const QString& name) const;
  void Store(const QString& name, const QByteArray& bytes);

 private:
  void StoreRecent(const QList<RecentServer>& servers);

  mutable QSettings mySettings;
};

}  // namespace corvane::map
