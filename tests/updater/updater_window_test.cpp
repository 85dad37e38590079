#include "updater/updater_window.h"

#include <gmock/gmock.h>
#include <string>
#include <vector>

#include <QDir>
#include <QFile>
#include <QPointer>
#include <QTemporaryDir>
#include <QTest>
#include <gtest/gtest.h>

#include "tests/support/test_client.h"
#include "tests/support/web_server.h"
#include "updater/version.h"

using namespace corvane;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class UpdaterWindowTest : public testing::Test {
 protected:
  ~UpdaterWindowTest() override { delete window; }

  // Opens the window for an installer at that path of the web server.
  void Open(const std::string& path) {
    delete window;
    update.downloadURL = path.empty() ? "" : server.Address(path);
    window = new UpdaterWindow(
        update, client,
        [this](const QString& file) {
          QFile installer(file);
          if (!installer.open(QIODevice::ReadOnly)) return false;
          events.push_back("launch " + QDir(folder.path()).relativeFilePath(file).toStdString() +
                           " " + installer.readAll().toStdString());
          return canLaunch;
        },
        [this] { events.emplace_back("quit"); }, nullptr);
    window->show();
    EXPECT_TRUE(QTest::qWaitForWindowActive(window));
  }
  void Download() { QTest::mouseClick(window->OKCancelControl1->LeftButton, Qt::LeftButton); }
  // Waits until the window says something; what it is.
  std::string Said() {
    PumpUntil([&] { return !window->DownloadLabel->text().isEmpty(); });
    return window->DownloadLabel->text().toStdString();
  }
  QStringList Files() const {
    return QDir(folder.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
  }

  QTemporaryDir folder;
  WebServer server;
  HttpClient client{"Corvane-Test/1.2"};
  Update update{"Server", "1.2.3.45", "Faster\nSafer", "", folder.filePath("new/folder"), true};
  bool canLaunch = true;
  std::vector<std::string> events;
  QPointer<UpdaterWindow> window;
};

}  // namespace

TEST_F(UpdaterWindowTest, ShowsBothVersionsAndTheChanges) {
  update.appName = "A%AppName%&<b>";
  update.changes =
      "<b>a</b>\r\nb\rc\xE2\x80\xA8"
      "d\te\x01\xE2\x80\xAE\xEF\xBF\xBC";
  Open("/setup.deb");
  EXPECT_EQ(window->windowTitle(), "Update Information");
  EXPECT_EQ(window->InfoLabel->text(), "There is an update available for A%AppName%&<b>.");
  EXPECT_EQ(window->StaticText2->text(), "Your Version:");
  EXPECT_EQ(window->CurrentVersionText->text().toStdString(), RunningVersion().FullVersion());
  EXPECT_EQ(window->StaticText3->text(), "New Version:");
  EXPECT_EQ(window->NewVersionText->text(), "1.2.3.45");
  EXPECT_EQ(window->UpdateLabel->text(),
            "A%AppName%&<b> will quit and automatically start the installer when the download is "
            "complete.");
  EXPECT_EQ(window->UpdateAgainLabel->text(),
            "If you are not ready to update now, you can check again later using File->Check for "
            "Updates.");
  EXPECT_EQ(window->ChangesArea->toPlainText().toStdString(),
            "<b>a</b>\nb\nc\nd\te\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD");
  EXPECT_EQ(window->OKCancelControl1->ActionButtonText(), "Download");
  EXPECT_EQ(window->OKCancelControl1->CancelButtonText(), "&Cancel");
}

TEST_F(UpdaterWindowTest, EndlessChangesAreCutAndBroken) {
  update.changes = std::string(1024 * 1024, 'x');
  Open("/setup.deb");
  EXPECT_LT(window->ChangesArea->toPlainText().size(), 101'000);
  EXPECT_GT(window->ChangesArea->blockCount(), 40);
}

TEST_F(UpdaterWindowTest, DownloadedInstallerIsStartedAndTheProgramQuits) {
  const struct {
    bool useActualFilename;
    const char* key;
    const char* file;
  } cases[] = {{true, "mouse", "setup%20a.deb"}, {false, "Enter", "WindowsInstaller.exe"}};
  server.answers["/a/setup%20a.deb"] = {OkReply("installer")};
  for (const auto& row : cases) {
    events.clear();
    update.useActualFilename = row.useActualFilename;
    Open("/a/setup%20a.deb");
    const int top = window->DownloadProgress->y();
    if (row.useActualFilename) {
      Download();
    } else {
      QTest::keyClick(window->focusWidget(), Qt::Key_Return);
    }
    EXPECT_FALSE(window->UpdateLabel->isVisible());
    EXPECT_FALSE(window->UpdateAgainLabel->isVisible());
    EXPECT_FALSE(window->OKCancelControl1->ActionButtonEnabled());
    PumpUntil([&] { return events.size() == 2; });
    EXPECT_THAT(events,
                ElementsAre(std::string("launch new/folder/") + row.file + " installer", "quit"));
    EXPECT_EQ(window->DownloadProgress->y(), top);
  }
}

TEST_F(UpdaterWindowTest, InstallerThatCannotBeStartedKeepsTheProgramRunning) {
  canLaunch = false;
  server.answers["/setup.deb"] = {OkReply("installer")};
  Open("/setup.deb");
  Download();
  EXPECT_THAT(Said(), testing::EndsWith(folder.filePath("new/folder/setup.deb").toStdString()));
  EXPECT_THAT(events, ElementsAre("launch new/folder/setup.deb installer"));
  EXPECT_TRUE(window->isVisible());
}

TEST_F(UpdaterWindowTest, FailedDownloadIsToldAndLeavesNothingBehind) {
  const std::string half = "HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\nhalf";
  server.answers["/short.deb"] = {half};
  server.answers["/empty/"] = server.answers["/.."] = server.answers["/a:b"] =
      server.answers["/a\\b"] = server.answers["/a\nb"] = {OkReply("installer")};
  for (const std::string path :
       {"/short.deb", "/missing.deb", "/empty/", "/.", "/..", "/a:b", "/a\\b", "/a\nb",
        "/a\xE2\x80\xAE"
        "b"}) {
    server.requests.clear();
    Open(path);
    EXPECT_EQ(window->DownloadLabel->text(), "");
    Download();
    EXPECT_EQ(Said(), "Error locating download file.") << path;
    EXPECT_EQ(server.requests.empty(), !path.ends_with(".deb")) << path;
    EXPECT_EQ(window->DownloadProgress->value(), 0);
    EXPECT_EQ(window->DownloadProgress->maximum(), 1000);
    EXPECT_FALSE(window->OKCancelControl1->ActionButtonEnabled());
    EXPECT_TRUE(window->isVisible());
    EXPECT_TRUE(QDir(folder.filePath("new/folder")).isEmpty());
  }
  Open("");
  EXPECT_FALSE(window->OKCancelControl1->ActionButtonEnabled());
  EXPECT_THAT(events, IsEmpty());
}

TEST_F(UpdaterWindowTest, ProgressIsTheShareOfTheWhole) {
  server.answers["/known"] = {
      "HTTP/1.1 200 OK\r\nContent-Length: 400\r\n\r\n" + std::string(100, 'x'), false};
  server.answers["/unknown"] = {"HTTP/1.1 200 OK\r\n\r\n" + std::string(100, 'x'), false};
  Open("/known");
  Download();
  EXPECT_TRUE(PumpUntil([&] { return window->DownloadProgress->value() == 250; }));
  Open("/unknown");
  Download();
  EXPECT_TRUE(PumpUntil([&] { return window->DownloadProgress->maximum() == 0; }));
}

TEST_F(UpdaterWindowTest, ClosingTheWindowCancelsTheDownload) {
  update.downloadLocation = folder.path();
  server.answers["/setup.deb"] = {
      "HTTP/1.1 200 OK\r\nContent-Length: 400\r\n\r\n" + std::string(100, 'x'), false};
  const std::vector<std::function<void()>> ways = {
      [this] { QTest::mouseClick(window->OKCancelControl1->RightButton, Qt::LeftButton); },
      [this] { QTest::keyClick(window->focusWidget(), Qt::Key_Escape); },
      [this] { window->close(); },
  };
  for (const auto& close : ways) {
    Open("/setup.deb");
    // The second Enter of two presses neither button.
    QTest::keyClick(window->focusWidget(), Qt::Key_Return);
    QTest::keyClick(window->focusWidget(), Qt::Key_Return);
    EXPECT_TRUE(PumpUntil([&] { return window->DownloadProgress->value() > 0; }));
    EXPECT_EQ(Files().size(), 1);
    close();
    EXPECT_EQ(window->DownloadSocket, nullptr);
    EXPECT_EQ(Files().size(), 0);
    EXPECT_TRUE(PumpUntil([&] { return window == nullptr; }));
  }
  EXPECT_THAT(events, IsEmpty());
}
