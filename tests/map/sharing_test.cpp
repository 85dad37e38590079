#include <algorithm>
#include <atomic>
#include <thread>

#include <QBuffer>
#include <QClipboard>
#include <QDir>
#include <QDropEvent>
#include <QFile>
#include <QGuiApplication>
#include <QLocalSocket>
#include <QMimeData>
#include <QRegularExpression>

#include "map/places/place_file.h"
#include "map/places/place_link.h"
#include "map/running_map.h"
#include "map/share_dialog.h"
#include "platform/local_socket_name.h"
#include "tests/map/map_fixture.h"

namespace corvane::map {
namespace {

using State = client::Connection::State;

QByteArray Image(const char* format) {
  QByteArray bytes;
  QBuffer buffer(&bytes);
  QImage image(300, 200, QImage::Format_RGB32);
  image.fill(Qt::red);
  EXPECT_TRUE(image.save(&buffer, format));
  return bytes;
}

class SharingTest : public WindowTest {
 protected:
  SharingTest() {
    myServer.AddNetwork("North");
    myPlace.port = static_cast<std::uint16_t>(myServer.Port());
    myPlace.landmarks = {{"Camp", "tent", 0xffff8000, "at eight", 2, {1200, 845}}};
  }

  QByteArray IniFile() {
    Stored();  // writes what is not in the file yet
    return Read("map.ini");
  }
  QByteArray Read(const QString& name) {
    QFile file(myFolder.filePath(name));
    EXPECT_TRUE(file.open(QFile::ReadOnly));
    return file.readAll();
  }
  QString Written() {
    QFile file(myFolder.filePath("a place.corvane"));
    EXPECT_TRUE(file.open(QFile::WriteOnly));
    file.write(ToPlaceFile(myPlace));
    return file.fileName();
  }
  ConnectDialog* Offered() { return Opened<ConnectDialog>("ConnectDialog"); }
  // Whether the place of that network is offered, once it is read.
  bool Offers(const QString& network) {
    return PumpUntil([&] {
      return IsOpen("ConnectDialog") && Offered()->Summary()->lblNetwork->text() == network;
    });
  }
  // The settings that the window works with; QSettings shares what is in memory.
  Settings Stored() { return Settings(myFolder.filePath("map.ini")); }

  TestServer myServer;
  Place myPlace{"127.0.0.1", 0, false, {}, "North"};
};

TEST_F(SharingTest, AFileIsUsedOnceTheUserAgreesAndIsLoggedIn) {
  QByteArray bomb = Image("JPG");
  // Height and width in its frame header (ISO 10918-1).
  bomb.replace(bomb.indexOf("\xff\xc0") + 5, 4, "\x7f\xff\x7f\xff");
  myPlace.digest = QByteArray::fromStdString(PasswordDigest("secret"));
  myPlace.pictures = {{0, "isle.png", Image("PNG"), {10, 20}, 4},
                      {1, "../../bomb.jpg", bomb},
                      {2, "cut.png", Image("PNG").first(120)}};
  const QString file = Written();
  const QByteArray before = IniFile();
  for (const bool agrees : {false, true}) {
    myWindow->OpenPlace(file);
    ASSERT_TRUE(Offers("North"));
    EXPECT_TRUE(Offered()->Summary()->lblServer->text().startsWith("127.0.0.1, port "));
    EXPECT_TRUE(Offered()->Summary()->chkContent->text().contains("(3)"));
    EXPECT_FALSE(Offered()->txtPassword->isVisible()) << "the file has its digest";
    EXPECT_FALSE(Offered()->txtHost->isVisible());
    QTest::keyClicks(Offered()->focusWidget(), "Ann");
    if (!agrees) Click(Offered()->btnCancel);
    EXPECT_EQ(State(), State::Offline);
    EXPECT_EQ(IniFile(), before);
  }
  QTest::keyClick(Offered(), Qt::Key_Return);
  ASSERT_TRUE(Reaches(State::Online));
  EXPECT_TRUE(Shows("facet 1 is not used: 32767 x 32767"));
  EXPECT_TRUE(Shows("cannot be shown"));
  EXPECT_EQ(Stored().Pictured(), QList<int>{0});
  const MapPicture picture = Stored().PictureOf(0);
  EXPECT_EQ(picture.corner, QPointF(10, 20));
  EXPECT_TRUE(picture.path.startsWith(myFolder.filePath("Corvane Map Pictures/")));
  EXPECT_TRUE(
      QRegularExpression("/[0-9a-f]{32}-[0-9a-f]{32}[.]png$").match(picture.path).hasMatch());
  EXPECT_FALSE(IniFile().contains(myPlace.digest.toHex()));

  // Again, with a broken picture for the facet: the working one stays, and so does the landmark.
  myPlace.pictures = {{0, "isle.png", Image("PNG").first(20)}};
  myPlace.digest.clear();
  myWindow->OpenPlace(Written());
  ASSERT_TRUE(Offers("North"));
  EXPECT_EQ(Offered()->txtUser->text(), "Ann");
  Type(Offered()->txtPassword, "secret");
  Click(Offered()->btnConnect);
  EXPECT_TRUE(Shows("facet 0 is not used: it cannot be read"));
  EXPECT_EQ(Stored().PictureOf(0), picture);
  EXPECT_TRUE(QFile::exists(picture.path));
  EXPECT_EQ(Stored().Landmarks(), myPlace.landmarks);
}

TEST_F(SharingTest, ATrustedCertificateIsReplacedOnlyIfTheUserTicksIt) {
  const QByteArray one(32, '\1');
  const QByteArray other(32, '\2');
  struct Case {
    bool wasEncrypted;
    QByteArray trusted;
    QByteArray offered;
    bool warns;
    QByteArray used;
  };
  int number = 0;
  for (const Case& each : {Case{true, one, other, true, one},
                           {true, {}, other, true, {}},
                           {true, one, one, false, one},
                           {true, one, {}, false, one},
                           {false, {}, other, false, other}}) {
    RecentServer known;
    known.host = "Example.org";
    known.port = myPlace.port;
    known.isEncrypted = each.wasEncrypted;
    known.fingerprint = each.trusted;
    Stored().Remember(known);
    Place place{"example.org", myPlace.port, !each.offered.isEmpty(), each.offered,
                QString::number(++number)};
    myWindow->OpenPlace(ToPlaceLink(place));
    ASSERT_TRUE(Offers(place.network));
    PlaceSummary& summary = *Offered()->Summary();
    EXPECT_EQ(summary.lblWarning->isVisible(), each.warns);
    EXPECT_TRUE(Offered()->chkEncrypted->isChecked());
    EXPECT_EQ(Offered()->txtFingerprint->text(), client::FingerprintText(each.used));
    if (!each.warns) continue;
    QTest::keyClick(summary.chkReplace, Qt::Key_Space);
    EXPECT_EQ(Offered()->txtFingerprint->text(), client::FingerprintText(other));
  }
}

TEST_F(SharingTest, SharesTheServerAndWhatIsTicked) {
  EXPECT_FALSE(myWindow->actions->actShare->isEnabled());
  Login(myServer.Port());
  ASSERT_TRUE(Reaches(State::Online));
  QImage(8, 8, QImage::Format_RGB32).save(myFolder.filePath("isle.bmp"));
  QImage(8, 8, QImage::Format_RGB32).save(myFolder.filePath("isle.png"));
  Settings settings = Stored();
  settings.SetPictureOf(0, {MapPicture::Kind::Image, myFolder.filePath("isle.png"), {1, 2}, 3});
  settings.SetPictureOf(1, {MapPicture::Kind::Image, myFolder.filePath("isle.bmp"), {}, 1});
  settings.SetPictureOf(2, {MapPicture::Kind::Tiles, myFolder.path(), {}, 1});
  myWindow->Marks().Board().Add(myPlace.landmarks);
  myWindow->actions->actShare->trigger();
  auto* dialog = Opened<ShareDialog>("ShareDialog");
  Click(dialog->btnCopy);
  EXPECT_EQ(QGuiApplication::clipboard()->text(), ToPlaceLink(myPlace));
  dialog->Save(myFolder.filePath("x.corvane"));
  myPlace.pictures = {{0, "isle.png", Read("isle.png"), {1, 2}, 3}};
  EXPECT_EQ(FromPlaceFile(Read("x.corvane")).place, myPlace);
  dialog->chkPassword->click();
  dialog->chkPictures->click();
  dialog->Save(myFolder.filePath("x.corvane"));
  EXPECT_EQ(FromPlaceFile(Read("x.corvane")).place->digest.toStdString(), PasswordDigest("secret"));
  EXPECT_TRUE(FromPlaceFile(Read("x.corvane")).place->pictures.isEmpty());
}

TEST_F(SharingTest, OpensWhatIsDroppedAndShowsWhatItCannotOpen) {
  const auto drop = [this](const QList<QUrl>& urls) {
    QMimeData data;
    data.setUrls(urls);
    QDragEnterEvent enter({5, 5}, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    enter.ignore();
    QCoreApplication::sendEvent(&*myWindow, &enter);
    QDropEvent event({5, 5}, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(&*myWindow, &event);
    return enter.isAccepted();
  };
  EXPECT_FALSE(drop({QUrl("https://example.org/n"), QUrl("corvane://example.org/n")}));
  EXPECT_FALSE(IsOpen("ConnectDialog"));
  EXPECT_TRUE(drop({QUrl("corvane://example.org/one")}));
  EXPECT_TRUE(Offers("one"));
  // Of several the last one is shown, although the first takes longer.
  myPlace.pictures = {{0, "large.png", Image("PNG") + QByteArray(8 << 20, 'x')}};
  EXPECT_TRUE(drop({QUrl::fromLocalFile(Written())}));
  EXPECT_TRUE(drop({QUrl("corvane://example.org/two")}));
  EXPECT_TRUE(drop({QUrl::fromLocalFile(myFolder.filePath("missing.corvane"))}));
  ASSERT_TRUE(PumpUntil([&] { return IsOpen("PlaceError"); }));
  EXPECT_TRUE(Opened<QMessageBox>("PlaceError")->text().contains("no such file"));
  EXPECT_TRUE(Offers("two"));
  myWindow->OpenPlace(myFolder.filePath("a place.corvane"));
  myWindow.reset();  // while it reads
}

TEST(RunningMap, TakesOverWhatAnotherStartIsToOpen) {
  const QTemporaryDir folder;
  const auto handOver = [&](const QString& place) {
    std::atomic<bool> isTaken = false;
    std::atomic<bool> hasEnded = false;
    std::thread starting([&] {
      isTaken = RunningMap::HandOver(folder.path(), place);
      hasEnded = true;
    });
    EXPECT_TRUE(PumpUntil([&] { return hasEnded.load(); }));
    starting.join();
    return isTaken.load();
  };
  EXPECT_FALSE(handOver("x")) << "there is none";
  QFile dead(QDir(folder.path()).filePath(LocalSocketName(folder.path(), kMapSocket)));
  EXPECT_TRUE(dead.open(QFile::WriteOnly));
  dead.close();
  RunningMap first(folder.path());
  const RunningMap second(folder.path());
  QStringList received;
  first.PlaceReceived = [&](const QString& place) { received.append(place); };
  // Some say nothing, others too much.
  QLocalSocket hostile[RunningMap::kMaxClients - 1];
  for (QLocalSocket& socket : hostile) {
    socket.connectToServer(LocalSocketName(folder.path(), kMapSocket));
    socket.write(QByteArray(&socket == hostile ? RunningMap::kMaxBytes : 1, 'x'));
  }
  EXPECT_TRUE(handOver("/a b/\u00e9\n.corvane"));
  EXPECT_EQ(received, QStringList{"/a b/\u00e9\n.corvane"});
  EXPECT_TRUE(PumpUntil([&] {
    return std::ranges::none_of(hostile, [](const QLocalSocket& socket) {
      return socket.state() == QLocalSocket::ConnectedState;
    });
  }));
}

}  // namespace
}  // namespace corvane::map
