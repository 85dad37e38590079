#include "framework/http_client.h"

#include <filesystem>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include "tests/support/test_client.h"
#include "tests/support/web_server.h"

namespace corvane {
namespace {

using std::chrono::milliseconds;

class HttpClientTest : public testing::Test {
 protected:
  // Waits for the reply. Returns the body, "failed" or "no reply".
  std::string Fetch(HttpRequest request) {
    std::optional<HttpReply> reply;
    const auto transfer = client.Get(std::move(request), [&](const HttpReply& got) {
      EXPECT_FALSE(reply.has_value());
      reply = got;
    });
    EXPECT_FALSE(reply.has_value());
    PumpUntil([&] { return reply.has_value(); });
    PumpFor(milliseconds(1));
    if (!reply) return "no reply";
    return reply->succeeded ? reply->body.toStdString() : "failed";
  }
  HttpRequest To(const std::string& path, milliseconds timeout = milliseconds(5000)) const {
    HttpRequest request;
    request.url = QUrl(QString::fromStdString(server.Address(path)));
    request.timeout = timeout;
    request.maxBytes = 1000;
    return request;
  }
  std::string Contents(const QString& name) const {
    QFile file(folder.filePath(name));
    return file.open(QIODevice::ReadOnly) ? file.readAll().toStdString() : "none";
  }
  qsizetype FileCount() const {
    return QDir(folder.path()).entryList(QDir::Files | QDir::Hidden | QDir::System).size();
  }

  QTemporaryDir folder;
  WebServer server;
  HttpClient client{"Corvane-Test/1.2"};
};

TEST_F(HttpClientTest, GivesTheWholeReplyOrFails) {
  const std::string binary("\0\xFF\r\n\r\n\x80", 7);
  const struct {
    const char* path;
    WebServer::Answer answer;
    std::string result;
    milliseconds timeout{5000};
  } cases[] = {
      {"/binary", {OkReply(binary)}, binary},
      {"/unannounced", {"HTTP/1.0 200 OK\r\n\r\npage"}, "page"},
      {"/largest", {OkReply(std::string(1000, 'x'))}, std::string(1000, 'x')},
      {"/announced-too-large",
       {"HTTP/1.1 200 OK\r\nContent-Length: 1001\r\n\r\nx", false},
       "failed"},
      {"/partial", {"HTTP/1.1 206 Part\r\nContent-Length: 4\r\n\r\npage"}, "failed"},
      {"/too-large", {"HTTP/1.0 200 OK\r\n\r\n" + std::string(5000, 'x')}, "failed"},
      {"/short", {"HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\npage"}, "failed"},
      {"/chunks",
       {"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n4\r\npage\r\n0\r\n\r\n"},
       "page"},
      // It ends before the announced length.
      {"/short-chunks",
       {"HTTP/1.1 200 OK\r\nContent-Length: 10\r\nTransfer-Encoding: chunked\r\n\r\n"
        "4\r\npage\r\n0\r\n\r\n"},
       "failed"},
      {"/noise", {std::string(300, '\x80')}, "failed"},
      {"/error", {"HTTP/1.1 500 Oops\r\nContent-Length: 4\r\n\r\npage"}, "failed"},
      {"/hangs", {"", false}, "failed", milliseconds(50)},
      {"/hangs-later",
       {"HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\npage", false},
       "failed",
       milliseconds(50)},
  };
  for (const auto& row : cases) {
    server.answers[row.path] = row.answer;
    EXPECT_EQ(Fetch(To(row.path, row.timeout)), row.result) << row.path;
  }
  HttpRequest impatient = To("/hangs-later");
  impatient.silence = milliseconds(50);
  EXPECT_EQ(Fetch(impatient), "failed");
  EXPECT_EQ(Fetch(To("/missing")), "failed");
  HttpRequest local;
  local.url = QUrl::fromLocalFile(QStringLiteral("/etc/hostname"));
  EXPECT_EQ(Fetch(local), "failed");
  EXPECT_EQ(Fetch({}), "failed");
}

TEST_F(HttpClientTest, FollowsFiveRedirectsAndKeepsNoCookies) {
  for (int step = 0; step < 6; ++step)
    server.answers["/r" + std::to_string(step)] = {
        RedirectReply(server.Address("/r" + std::to_string(step + 1)))};
  server.answers["/r6"] = {OkReply("arrived")};
  EXPECT_EQ(Fetch(To("/r0")), "failed");
  EXPECT_EQ(Fetch(To("/r1")), "arrived");
  server.answers["/to-file"] = {RedirectReply("file:///etc/hostname")};
  EXPECT_EQ(Fetch(To("/to-file")), "failed");

  server.answers["/cookie"] = {"HTTP/1.1 200 OK\r\nSet-Cookie: a=b\r\nContent-Length: 0\r\n\r\n"};
  Fetch(To("/cookie"));
  Fetch(To("/cookie"));
  EXPECT_EQ(server.requests.back().find("Cookie"), std::string::npos);
  EXPECT_NE(server.requests.back().find("User-Agent: Corvane-Test/1.2\r\n"), std::string::npos);
}

TEST_F(HttpClientTest, FileIsReplacedWholeOrNotAtAll) {
  server.answers["/new"] = {OkReply("new")};
  server.answers["/short"] = {"HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\nhalf"};
  const auto fetchInto = [&](const QString& name, const std::string& path) {
    HttpRequest request = To(path);
    request.file = folder.filePath(name);
    return Fetch(request);
  };
  EXPECT_EQ(fetchInto("a", "/short"), "failed");
  EXPECT_EQ(FileCount(), 0);
  EXPECT_EQ(fetchInto("a", "/new"), "");
  EXPECT_EQ(Contents("a"), "new");
  EXPECT_EQ(fetchInto("a", "/short"), "failed");
  EXPECT_EQ(Contents("a"), "new");
  EXPECT_EQ(fetchInto("missing/b", "/new"), "failed");
  server.answers["/empty"] = {OkReply("")};
  EXPECT_EQ(fetchInto("a", "/empty"), "failed");
  EXPECT_EQ(Contents("a"), "new");
  EXPECT_EQ(FileCount(), 1);

  // A link of that name is replaced and its target is unchanged. Some systems permit no links.
  std::error_code error;
  std::filesystem::create_symlink("a", folder.filePath("link").toStdString(), error);
  server.answers["/new"] = {OkReply("other")};
  EXPECT_EQ(fetchInto("link", "/new"), "");
  EXPECT_EQ(Contents("a"), "new");
  EXPECT_EQ(Contents("link"), "other");
}

TEST_F(HttpClientTest, CancelledTransferCallsNothingAndLeavesNothing) {
  server.answers["/half"] = {"HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\nhalf", false};
  HttpRequest request = To("/half");
  request.file = folder.filePath("a");
  std::pair<std::int64_t, std::int64_t> progress;
  request.progress = [&](std::int64_t received, std::int64_t of) { progress = {received, of}; };
  auto transfer = client.Get(request, [](const HttpReply&) { ADD_FAILURE(); });
  ASSERT_TRUE(PumpUntil([&] { return progress == std::pair<std::int64_t, std::int64_t>{4, 10}; }));
  EXPECT_EQ(FileCount(), 1);
  transfer.reset();
  PumpFor(milliseconds(20));
  EXPECT_EQ(FileCount(), 0);

  // From inside its own callbacks, too, also if only the end of the reply is wrong.
  server.answers["/good"] = {OkReply("page")};
  server.answers["/too-large"] = {"HTTP/1.1 200 OK\r\nContent-Length: 99999999\r\n\r\n"};
  for (const char* path : {"/good", "/too-large"}) {
    transfer = client.Get(To(path), [&](const HttpReply&) { transfer.reset(); });
    EXPECT_TRUE(PumpUntil([&] { return transfer == nullptr; }));
  }
  request.url = To("/good").url;
  request.progress = [&](std::int64_t, std::int64_t) { transfer.reset(); };
  transfer = client.Get(request, [](const HttpReply&) { ADD_FAILURE(); });
  EXPECT_TRUE(PumpUntil([&] { return transfer == nullptr; }));
  EXPECT_EQ(FileCount(), 0);
}

}  // namespace
}  // namespace corvane
