#include "updater/updater_window.h"

#include <QDir>
#include <QFile>
#include <QPointer>
#include <QTemporaryDir>
#include <QTest>
#include <gmock/gmock.h>

#include "tests/support/test_client.h"
#include "tests/support/web_server.h"
#include "updater/version.h"

namespace corvane {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class UpdaterWindowTest : public testing::Test {
 protected:
  void TearDown() override { delete window; }

  // Opens the window for an installer at this path of the web server.
  void Open(const std::string& path) {
    delete window;
    update.downloadURL = path.empty() ? "" : server.Address(path);
    window = new UpdaterWindow(
        update, client,
        [this](const QString& file, QObject& /*asker*/, const std::function<void(bool)>& done) {
          QFile installer(file);
          EXPECT_TRUE(installer.open(QIODevice::ReadOnly));
          events.push_back("launch " + folder.relativeFilePath(file).toStdString() + " " +
                           installer.readAll().toStdString());
          done(canLaunch);
        },
        [this] { events.emplace_back("quit"); });
    window->show();
    EXPECT_TRUE(QTest::qWaitForWindowActive(window));
  }
  void PressDownload() { QTest::mouseClick(window->OKCancelControl1->LeftButton, Qt::LeftButton); }
  void PressEnter() { QTest::keyClick(window->focusWidget(), Qt::Key_Return); }
  // Waits until the window shows a message, and returns it.
  std::string Message() {
    PumpUntil([&] { return !window->DownloadLabel->text().isEmpty(); });
    return window->DownloadLabel->text().toStdString();
  }

  QTemporaryDir parent;
  const QDir folder{parent.filePath("new/folder")};
  WebServer server;
  HttpClient client{"Corvane-Test/1.2"};
  Update update{"Server", "1.2.3.45", "Faster", "", folder.path(), true};
  bool canLaunch = true;
  std::vector<std::string> events;
  QPointer<UpdaterWindow> window;
};

TEST_F(UpdaterWindowTest, ShowsVersionsAndChangesOfAnyContent) {
  EXPECT_EQ(UpdaterWindow::WithAppName("%AppName% and %AppName%", "<b>"), "<b> and <b>");
  update.changes = "<b>a</b>\r\nb\rc\xE2\x80\xA8\td\x01\xE2\x80\xAE\xEF\xBF\xBC";
  Open("/setup.deb");
  EXPECT_EQ(window->InfoLabel->text(), "There is an update available for Server.");
  EXPECT_EQ(window->CurrentVersionText->text().toStdString(), RunningVersion().FullVersion());
  EXPECT_EQ(window->NewVersionText->text(), "1.2.3.45");
  EXPECT_EQ(window->ChangesArea->toPlainText().toStdString(),
            "<b>a</b>\nb\nc\n\td\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD");

  update.changes = std::string(1024 * 1024, 'x');
  Open("/setup.deb");
  EXPECT_LT(window->ChangesArea->toPlainText().size(), 101'000);
  EXPECT_GT(window->ChangesArea->blockCount(), 40);
}

TEST_F(UpdaterWindowTest, DownloadedInstallerIsStartedAndTheProgramQuits) {
  server.answers["/a/setup%20a.deb"] = {OkReply("installer")};
  Open("/a/setup%20a.deb");
  const QRect place = window->ChangesArea->geometry();
  PressDownload();
  EXPECT_FALSE(window->UpdateLabel->isVisible() || window->UpdateAgainLabel->isVisible());
  EXPECT_FALSE(window->OKCancelControl1->ActionButtonEnabled());
  PumpUntil([&] { return events.size() == 2; });
  EXPECT_THAT(events, ElementsAre("launch setup%20a.deb installer", "quit"));
  EXPECT_EQ(window->ChangesArea->geometry(), place);

  events.clear();
  update.useActualFilename = canLaunch = false;
  Open("/a/setup%20a.deb");
  PressEnter();
  const QString path = QDir::toNativeSeparators(folder.filePath("WindowsInstaller.exe"));
  EXPECT_THAT(Message(), testing::EndsWith(path.toStdString()));
  EXPECT_THAT(events, ElementsAre("launch WindowsInstaller.exe installer"));
}

TEST_F(UpdaterWindowTest, FailedDownloadIsReportedAndLeavesNothingBehind) {
  server.answers["/short.deb"] = {"HTTP/1.1 200 OK\r\nContent-Length: 400000\r\n\r\n" +
                                  std::string(200'000, 'x')};
  const std::vector<std::string> paths = {
      "/short.deb", "/missing.deb", "/a/", "/.", "/..", "/a:b", "/a\\b", "/a\tb", "/a\xE2\x80\xAE"};
  for (const std::string& path : paths) {
    server.requests.clear();
    Open(path);
    PressDownload();
    EXPECT_EQ(Message(), "Error locating download file.") << path;
    EXPECT_EQ(server.requests.empty(), !path.ends_with(".deb")) << path;
    EXPECT_EQ(window->DownloadProgress->value(), 0);
    EXPECT_FALSE(window->OKCancelControl1->ActionButtonEnabled());
    EXPECT_TRUE(window->isVisible());
    EXPECT_TRUE(folder.isEmpty(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot));
  }
  Open("");
  EXPECT_FALSE(window->OKCancelControl1->ActionButtonEnabled());
  EXPECT_THAT(events, IsEmpty());
}

TEST_F(UpdaterWindowTest, DownloadShowsItsProgressUntilTheWindowIsClosed) {
  server.answers["/unknown"] = {"HTTP/1.1 200 OK\r\n\r\nx", false};
  Open("/unknown");
  PressDownload();
  EXPECT_TRUE(PumpUntil([&] { return window->DownloadProgress->maximum() == 0; }));

  server.answers["/known"] = {
      "HTTP/1.1 200 OK\r\nContent-Length: 12000000\r\n\r\n" + std::string(3'000'000, 'x'), false};
  const std::vector<std::function<void()>> ways = {
      [this] { QTest::mouseClick(window->OKCancelControl1->RightButton, Qt::LeftButton); },
      [this] { QTest::keyClick(window->focusWidget(), Qt::Key_Escape); },
      [this] { window->close(); },
  };
  for (const auto& close : ways) {
    Open("/known");
    window->OKCancelControl1->LeftButton->setFocus();
    PressEnter();
    // A second Enter presses nothing, not even the next button.
    PressEnter();
    EXPECT_TRUE(PumpUntil([&] { return window->DownloadProgress->value() == 250; }));
    EXPECT_FALSE(folder.isEmpty());
    close();
    EXPECT_TRUE(folder.isEmpty());
    EXPECT_TRUE(PumpUntil([&] { return window == nullptr; }));
  }
  EXPECT_THAT(events, IsEmpty());
}

}  // namespace
}  // namespace corvane
