#include "updater/updater_window.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include <QDir>
#include <QGridLayout>
#include <QPainter>
#include <QVBoxLayout>

#include "framework/text.h"
#include "framework/visible_text.h"
#include "updater/version.h"

namespace corvane {
namespace {

constexpr QSize kInitialSize{520, 420};
constexpr int kMinColumns = 75;
constexpr int kMinLines = 5;
constexpr int kIconSize = 48;
constexpr int kFullBar = 1000;
constexpr std::size_t kMaxVersionLength = 100;  // characters
constexpr qsizetype kMaxChangesLength = 100'000;
constexpr qsizetype kMaxLineLength = 2'000;
constexpr qsizetype kMaxLines = 5'000;
// A slow download may take long, provided that data keep arriving.
constexpr std::chrono::hours kDownloadTimeout{12};
constexpr std::chrono::seconds kDownloadSilence{60};
constexpr std::int64_t kMaxInstallerBytes = std::int64_t{2} << 30;

// Draws the window's icon, sharp on every screen.
class IconArea : public QWidget {
 public:
  explicit IconArea(QWidget* parent) : QWidget(parent) { setFixedSize(kIconSize, kIconSize); }

 protected:
  void paintEvent(QPaintEvent* /*event*/) override {
    QPainter painter(this);
    window()->windowIcon().paint(&painter, rect());
  }
};

// A label that never requires more width than the window has.
QLabel* NewLabel(const QString& text, QWidget* parent) {
  auto* label = new QLabel(parent);
  label->setTextFormat(Qt::PlainText);
  label->setWordWrap(true);
  label->setMinimumWidth(1);
  label->setAlignment(Qt::AlignLeft | Qt::AlignTop);
  label->setText(text);
  return label;
}

// Whether the character is invisible, reorders its neighbours or is special in Qt's text documents.
bool IsOdd(QChar character) {
  const char16_t code = character.unicode();
  const bool isNonCharacter = (code >= 0xFDD0 && code <= 0xFDEF) || code >= 0xFFFE;
  return character.category() == QChar::Other_Control ||
         character.category() == QChar::Other_Format || code == QChar::ObjectReplacementCharacter ||
         isNonCharacter;
}

// Makes a list of changes from a stranger safe to show. Bounds the lines and the text: laying out
// long lines takes long, and the window shares the server's loop.
QString ShownChanges(const std::string& changes) {
  QString shown;
  qsizetype lineLength = 0;
  qsizetype lines = 0;
  const QString text = DisplayText(changes).replace(QLatin1String("\r\n"), QLatin1String("\n"));
  for (const QChar character : text) {
    const bool isWhole = !character.isLowSurrogate();
    const bool isLong = shown.size() >= kMaxChangesLength || lines >= kMaxLines;
    if (isLong && isWhole) return shown + QChar(0x2026);
    const char16_t code = character.unicode();
    const bool isLineEnd = code == u'\n' || code == u'\r' || code == QChar::LineSeparator ||
                           code == QChar::ParagraphSeparator;
    if (!isLineEnd && lineLength >= kMaxLineLength && isWhole) {
      shown += u'\n';
      lineLength = 0;
    }
    lineLength = isLineEnd ? 0 : lineLength + 1;
    if (isLineEnd) {
      ++lines;
      shown += u'\n';
    } else {
      shown += code != u'\t' && IsOdd(character) ? QChar(QChar::ReplacementCharacter) : character;
    }
  }
  return shown;
}

// Whether a name from an address is a file's name directly in the download folder.
bool IsFileName(const QString& name) {
  return !name.isEmpty() && name != QLatin1String(".") && name != QLatin1String("..") &&
         std::none_of(name.cbegin(), name.cend(), [](QChar character) {
           return QStringLiteral("/\\:").contains(character) ||
                  character.category() == QChar::Other_Control ||
                  character.category() == QChar::Other_Format;
         });
}

}  // namespace

UpdaterWindow::UpdaterWindow(const Update& update, HttpClient& http, Launch launchInstaller,
                             std::function<void()> quit)
    : mDownloadURL(DisplayText(update.downloadURL)),
      mDownloadLocation(update.downloadLocation),
      mUseActualFilename(update.useActualFilename),
      myHttp(http),
      LaunchInstaller(std::move(launchInstaller)),
      myQuit(std::move(quit)) {
  setObjectName(QStringLiteral("UpdaterWindow"));
  setWindowTitle(QStringLiteral("Update Information"));
  setAttribute(Qt::WA_DeleteOnClose);
  setWindowFlags(Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint |
                 Qt::WindowSystemMenuHint | Qt::WindowCloseButtonHint);

  AppIcon = new IconArea(this);
  InfoLabel = NewLabel(WithAppName(kUpdateMessage, update.appName), this);
  StaticText2 = new QLabel(QString::fromLatin1(kYourVersion), this);
  CurrentVersionText = NewLabel(FullVersion(), this);
  StaticText3 = new QLabel(QString::fromLatin1(kNewVersion), this);
  NewVersionText = NewLabel(VisibleText(update.newVersion, kMaxVersionLength), this);
  ChangesArea = new QPlainTextEdit(this);
  UpdateLabel = NewLabel(WithAppName(kQuitUpdate, update.appName), this);
  UpdateAgainLabel = NewLabel(WithAppName(kUpdateAgain, update.appName), this);
  DownloadProgress = new QProgressBar(this);
  DownloadLabel = NewLabel({}, this);
  OKCancelControl1 = new OKCancelControl(this);

  ChangesArea->setReadOnly(true);
  ChangesArea->setTabChangesFocus(true);
  ChangesArea->setAccessibleName(QStringLiteral("Changes"));
  ChangesArea->setPlainText(ShownChanges(update.changes));
  DownloadProgress->setAccessibleName(QStringLiteral("Download"));
  DownloadProgress->setRange(0, kFullBar);
  DownloadProgress->setValue(0);
  DownloadLabel->setTextInteractionFlags(Qt::TextSelectableByMouse);
  OKCancelControl1->SetActionButtonText(QStringLiteral("Download"));
  OKCancelControl1->OKAction = [this] { OKCancelControl1_OKAction(); };
  OKCancelControl1->CancelAction = [this] { OKCancelControl1_CancelAction(); };
  if (mDownloadURL.isEmpty()) ShowDownloadError();
  LayOut();
}

void UpdaterWindow::LayOut() {
  QFont headline = InfoLabel->font();
  headline.setBold(true);
  headline.setPointSizeF(headline.pointSizeF() * 1.15);
  InfoLabel->setFont(headline);
  for (QLabel* caption : {UpdateLabel, UpdateAgainLabel}) {
    // The other controls stay in place when these are hidden.
    QSizePolicy policy = caption->sizePolicy();
    policy.setRetainSizeWhenHidden(true);
    caption->setSizePolicy(policy);
    caption->setMinimumHeight(2 * fontMetrics().lineSpacing());
  }
  ChangesArea->setMinimumSize(kMinColumns * fontMetrics().averageCharWidth(),
                              kMinLines * fontMetrics().lineSpacing());
  DownloadLabel->setMinimumHeight(fontMetrics().lineSpacing());

  auto* grid = new QGridLayout;
  grid->setColumnStretch(2, 1);
  grid->setHorizontalSpacing(12);
  grid->addWidget(AppIcon, 0, 0, 3, 1, Qt::AlignTop);
  grid->addWidget(InfoLabel, 0, 1, 1, 2);
  grid->addWidget(StaticText2, 1, 1);
  grid->addWidget(CurrentVersionText, 1, 2);
  grid->addWidget(StaticText3, 2, 1);
  grid->addWidget(NewVersionText, 2, 2);

  auto* column = new QVBoxLayout(this);
  column->addLayout(grid);
  column->addWidget(ChangesArea, 1);
  column->addWidget(UpdateLabel);
  column->addWidget(UpdateAgainLabel);
  column->addWidget(DownloadProgress);
  column->addWidget(DownloadLabel);
  column->addWidget(OKCancelControl1);
  resize(kInitialSize);
}

QString UpdaterWindow::FullVersion() {
  return DisplayText(RunningVersion().FullVersion());
}

QString UpdaterWindow::WithAppName(const char* text, const std::string& appName) {
  return QString::fromLatin1(text).replace(QStringLiteral("%AppName%"), DisplayText(appName));
}

void UpdaterWindow::done(int result) {
  // Now: the window itself is deleted later by the event loop.
  DownloadSocket.reset();
  QDialog::done(result);
}

QString UpdaterWindow::FileName() const {
  if (!mUseActualFilename) return QStringLiteral("WindowsInstaller.exe");
  const QString name = mDownloadURL.mid(mDownloadURL.lastIndexOf(u'/') + 1);
  return IsFileName(name) ? name : QString();
}

void UpdaterWindow::OKCancelControl1_OKAction() {
  UpdateLabel->hide();
  UpdateAgainLabel->hide();
  // Otherwise the next button gets the focus, and a second Enter cancels.
  ChangesArea->setFocus();
  OKCancelControl1->SetActionButtonEnabled(false);
  const QString name = FileName();
  if (name.isEmpty() || !QDir().mkpath(mDownloadLocation)) return ShowDownloadError();

  HttpRequest request;
  request.url = QUrl(mDownloadURL);
  request.timeout = kDownloadTimeout;
  request.silence = kDownloadSilence;
  request.maxBytes = kMaxInstallerBytes;
  request.file = QDir(mDownloadLocation).absoluteFilePath(name);
  request.progress = [this](std::int64_t received, std::int64_t total) {
    DownloadSocket_ReceiveProgress(received, total);
  };
  const QString file = request.file;
  DownloadSocket = myHttp.Get(std::move(request), [this, file](const HttpReply& reply) {
    DownloadSocket_DownloadComplete(reply.succeeded, file);
  });
}

void UpdaterWindow::OKCancelControl1_CancelAction() {
  reject();
}

void UpdaterWindow::DownloadSocket_ReceiveProgress(std::int64_t received,
                                                   std::int64_t total) const {
  // Without a total the bar only shows activity.
  DownloadProgress->setRange(0, total > 0 ? kFullBar : 0);
  if (total <= 0) return;
  DownloadProgress->setValue(static_cast<int>(std::min(received, total) * kFullBar / total));
}

void UpdaterWindow::DownloadSocket_DownloadComplete(bool succeeded, const QString& file) {
  DownloadSocket.reset();
  if (!succeeded) return ShowDownloadError();
  DownloadProgress->setRange(0, kFullBar);
  DownloadProgress->setValue(kFullBar);
  LaunchInstaller(file, *this, [this, file](bool started) { InstallerLaunched(started, file); });
}

void UpdaterWindow::InstallerLaunched(bool started, const QString& file) const {
  if (started) return myQuit();
  // Quitting now would leave the operator without server and installer.
  const QString path = QDir::toNativeSeparators(file);
  DownloadLabel->setText(QStringLiteral("The installer could not be started. It is here:\n") +
                         path);
}

void UpdaterWindow::ShowDownloadError() const {
  OKCancelControl1->SetActionButtonEnabled(false);
  DownloadProgress->setRange(0, kFullBar);
  DownloadProgress->setValue(0);
  DownloadLabel->setText(QString::fromLatin1(kDownloadError));
}

}  // namespace corvane
