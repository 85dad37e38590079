#pragma once

#include <cstdint>

#include <QByteArray>
#include <QList>
#include <QSettings>
#include <QString>

#include "map/pictures/map_picture.h"

namespace corvane::map {

// A server that somebody has logged in to.
struct RecentServer {
  QString host;
  std::uint16_t port = 12000;
  QString network;
  QString userName;
  // Of the password; empty unless the user wants it remembered. Never the password itself.
  QByteArray digest;
};

// What the program remembers, in one file.
class Settings {
 public:
  static constexpr int kMaxRecent = 10;

  explicit Settings(const QString& file);

  // The last one used comes first.
  QList<RecentServer> RecentServers() const;
  // Puts it first, in place of an entry for the same user at the same place.
  void Remember(const RecentServer& server);

  MapPicture PictureOf(int facet) const;
  void SetPictureOf(int facet, const MapPicture& picture);
  // The facets that have a picture, in ascending order.
  QList<int> Pictured() const;

  // Where a window or splitter is.
  QByteArray Layout(const QString& of) const;
  void SetLayout(const QString& of, const QByteArray& layout);

 private:
  mutable QSettings mySettings;
};

}  // namespace corvane::map
