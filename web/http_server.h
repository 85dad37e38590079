#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include <QHostAddress>
#include <QString>

#include "map/pictures/tile_pyramid.h"
#include "web/assets.h"
#include "web/channel.h"
#include "web/links.h"

namespace corvane::web {

// What the links to a network lead to.
struct Site {
  std::shared_ptr<Channel> channel;
  std::string description;                // JSON: facets, pictures, landmarks
  std::map<int, map::TilePyramid> tiles;  // by facet
};

// Serves the page, tiles and streams of links over HTTP (RFC 9112) by libmicrohttpd, on a thread of
// its own. The first part of each path is a link's token; whatever has no valid one is answered
// with the same 404. Methods may be called from one other thread.
//
// Limits: 200 viewers of streams, 50 of them from one address, 600 connections, 16 KiB for a
// request. A connection ends after 10 s without progress, a stream after 30 s. An address that
// tried ten wrong tokens within a minute waits a second for each further answer. Behind a proxy on
// this machine, addresses are those of "X-Forwarded-For".
class HttpServer {
 public:
  static constexpr std::size_t kMaxViewers = 200;

  // By the networks' ids.
  HttpServer(std::map<QString, Site> sites, Assets assets);
  ~HttpServer();
  HttpServer(const HttpServer&) = delete;
  HttpServer& operator=(const HttpServer&) = delete;

  // Returns an error text, empty on success.
  QString Start(const QHostAddress& address, std::uint16_t port);
  // Ends the streams of links that are not among these.
  void SetLinks(const std::vector<Link>& links);
  // Continues the streams that have news, and the answers whose delay is over. To be called a few
  // times a second.
  void Wake();

 private:
  class Implementation;
  std::unique_ptr<Implementation> myImplementation;
};

}  // namespace corvane::web
