#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include <QDialog>
#include <QLabel>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QString>

#include "framework/http_client.h"
#include "updater/ok_cancel_control.h"
#include "updater/version_checker.h"

namespace corvane {

// Shows the operator a newer release and, on request, downloads its installer, starts it and quits
// the program. The download is tried once. An independent window that other windows' dialogs do not
// block. Destroys itself when it closes, which cancels the download and leaves no file behind.
// Borrows the HTTP client.
class UpdaterWindow : public QDialog {
 public:
  // "%AppName%" in these stands for the application's name.
  static constexpr const char* kUpdateMessage = "There is an update available for %AppName%.";
  static constexpr const char* kYourVersion = "Your Version:";
  static constexpr const char* kNewVersion = "New Version:";
  static constexpr const char* kQuitUpdate =
      "%AppName% will quit and automatically start the installer when the download is complete.";
  static constexpr const char* kUpdateAgain =
      "If you are not ready to update now, you can check again later using File->Check for "
      "Updates.";
  static constexpr const char* kDownloadError = "Error locating download file.";

  // Has the contract of the function LaunchInstaller.
  using Launch =
      std::function<void(const QString& file, QObject& asker, std::function<void(bool)> done)>;

  // `launchInstaller` starts the downloaded file. If that works, `quit` is called to end the
  // program.
  UpdaterWindow(const Update& update, HttpClient& http, Launch launchInstaller,
                std::function<void()> quit);

  // The running version.
  static QString FullVersion();
  // Replaces "%AppName%" in the text.
  static QString WithAppName(const char* text, const std::string& appName);

  void done(int result) override;

  // The controls. The window owns them.
  QWidget* AppIcon;
  QLabel* InfoLabel;
  QLabel* StaticText2;
  QLabel* CurrentVersionText;
  QLabel* StaticText3;
  QLabel* NewVersionText;
  QPlainTextEdit* ChangesArea;
  QLabel* UpdateLabel;
  QLabel* UpdateAgainLabel;
  QProgressBar* DownloadProgress;
  QLabel* DownloadLabel;
  OKCancelControl* OKCancelControl1;
  // The download in progress, if any.
  std::unique_ptr<HttpTransfer> DownloadSocket;

 private:
  void LayOut();
  // The name of the file in the download folder; empty if the address gives none.
  QString FileName() const;

  void OKCancelControl1_OKAction();
  void OKCancelControl1_CancelAction();
  void DownloadSocket_ReceiveProgress(std::int64_t received, std::int64_t total) const;
  void DownloadSocket_DownloadComplete(bool succeeded, const QString& file);
  void InstallerLaunched(bool started, const QString& file) const;
  void ShowDownloadError() const;

  const QString mDownloadURL;
  const QString mDownloadLocation;
  const bool mUseActualFilename;
  HttpClient& myHttp;
  const Launch LaunchInstaller;
  const std::function<void()> myQuit;
};

}  // namespace corvane
