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
constexpr int kLeastColumns = 75;
constexpr int kLeastLines = 5;
constexpr int kIconSize = 48;
constexpr int kWholeBar = 1000;
constexpr std::size_t kLongestVersion = 100;  // characters
constexpr qsizetype kLongestChanges = 100'000;
constexpr qsizetype kLongestLine = 2'000;
constexpr qsizetype kMostLines = 5'000;
// A slow line may take its time as long as something comes.
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

// A label that never claims more width than the window has.
QLabel* NewLabel(const QString& text, QWidget* parent) {
  auto* label = new QLabel(parent);
  label->setTextFormat(Qt::PlainText);
  label->setWordWrap(true);
  label->setMinimumWidth(1);
  label->setAlignment(Qt::AlignLeft | Qt::AlignTop);
  label->setText(text);
  return label;
}

// Whether the character draws nothing, rearranges its neighbours or means something to Qt's text
// documents.
bool IsOdd(QChar character) {
  const char16_t code = character.unicode();
  const bool isNonCharacter = (code >= 0xFDD0 && code <= 0xFDEF) || code >= 0xFFFE;
  return character.category() == QChar::Other_Control ||
         character.category() == QChar::Other_Format || code == QChar::ObjectReplacementCharacter ||
         isNonCharacter;
}

// The list of changes as it is shown, whoever wrote it. Lines have an end and so has the text,
// because the time to lay out a line grows with its length and the window's loop is the server's.
QString ShownChanges(const std::string& changes) {
  QString shown;
  qsizetype lineLength = 0;
  qsizetype lines = 0;
  const QString text = DisplayText(changes).replace(QLatin1String("\r\n"), QLatin1String("\n"));
  for (const QChar character : text) {
    const bool isWhole = !character.isLowSurrogate();
    const bool isLong = shown.size() >= kLongestChanges || lines >= kMostLines;
    if (isLong && isWhole) return shown + QChar(0x2026);
    const char16_t code = character.unicode();
    const bool isLineEnd = code == u'\n' || code == u'\r' || code == QChar::LineSeparator ||
                           code == QChar::ParagraphSeparator;
    if (!isLineEnd && lineLength >= kLongestLine && isWhole) {
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

// Whether a name that came with an address is one of a file right in the download folder.
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
  NewVersionText = NewLabel(VisibleText(update.newVersion, kLongestVersion), this);
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
  DownloadProgress->setRange(0, kWholeBar);
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
    // Nothing moves when they are hidden.
    QSizePolicy policy = caption->sizePolicy();
    policy.setRetainSizeWhenHidden(true);
    caption->setSizePolicy(policy);
    caption->setMinimumHeight(2 * fontMetrics().lineSpacing());
  }
  ChangesArea->setMinimumSize(kLeastColumns * fontMetrics().averageCharWidth(),
                              kLeastLines * fontMetrics().lineSpacing());
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
  // Now, since the window itself goes only when the loop gets to it.
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
  // The next button would take the focus, and a second Enter would cancel.
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
  // Without a total the bar shows only that something is going on.
  DownloadProgress->setRange(0, total > 0 ? kWholeBar : 0);
  if (total <= 0) return;
  DownloadProgress->setValue(static_cast<int>(std::min(received, total) * kWholeBar / total));
}

void UpdaterWindow::DownloadSocket_DownloadComplete(bool succeeded, const QString& file) {
  DownloadSocket.reset();
  if (!succeeded) return ShowDownloadError();
  DownloadProgress->setRange(0, kWholeBar);
  DownloadProgress->setValue(kWholeBar);
  LaunchInstaller(file, *this, [this, file](bool started) { InstallerLaunched(started, file); });
}

void UpdaterWindow::InstallerLaunched(bool started, const QString& file) const {
  if (started) return myQuit();
  // Quitting now would leave the operator with neither a server nor an installer.
  const QString path = QDir::toNativeSeparators(file);
  DownloadLabel->setText(QStringLiteral("The installer could not be started. It is here:\n") +
                         path);
}

void UpdaterWindow::ShowDownloadError() const {
  OKCancelControl1->SetActionButtonEnabled(false);
  DownloadProgress->setRange(0, kWholeBar);
  DownloadProgress->setValue(0);
  DownloadLabel->setText(QString::fromLatin1(kDownloadError));
}

}  // namespace corvane
