// The map under load, painting included: 1,000 members that report twice a second each, then with
// 500 landmarks and all alarms, then the same on a picture of 16,384 x 16,384 pixels that is moved
// and scaled all the time. Prints the longest events, the processor time and the memory. The thread
// that feeds the window is not counted.

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <future>
#include <png.h>
#include <string>
#include <sys/resource.h>
#include <thread>
#include <vector>

#include <QApplication>
#include <QFile>
#include <QScrollBar>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>

#include "bench/event_times.h"
#include "client/wire.h"
#include "map/map_window.h"
#include "map/places/landmark_icons.h"

namespace {

using namespace corvane;
using namespace corvane::map;
using std::chrono::milliseconds;
using std::chrono::seconds;
using MapApplication = MeasuredApplication<QApplication>;

constexpr int kMembers = 1000;
constexpr milliseconds kTurn{10};
constexpr int kReportsPerTurn = kMembers * 2 / 100;
constexpr seconds kDuration{20};
constexpr int kSide = 16'384;
constexpr int kLandmarks = 500;

// A server that accepts any login and then reports members that walk in circles.
class Feeder {
 public:
  Feeder() {
    std::promise<std::uint16_t> port;
    myThread = std::thread([this, &port] { Feed(port); });
    myPort = port.get_future().get();
  }
  ~Feeder() {
    myStops = true;
    myThread.join();
  }
  Feeder(const Feeder&) = delete;
  Feeder& operator=(const Feeder&) = delete;

  std::uint16_t Port() const { return myPort; }
  // Processor time of the thread.
  double CpuSeconds() const { return myCpu; }

 private:
  void Feed(std::promise<std::uint16_t>& port) {
    QTcpServer server;
    server.listen(QHostAddress::LocalHost);
    port.set_value(server.serverPort());
    if (!server.waitForNewConnection(30'000)) return;
    QTcpSocket* client = server.nextPendingConnection();
    std::string output;
    for (const auto& [command, payload] :
         {std::pair(1, "Network"), std::pair(2, "OK"), std::pair(3, "OK"), std::pair(4, "OK")})
      client::AppendFrame(output, command, payload);
    std::uint64_t answer = 0;
    for (std::uint64_t report = 0; !myStops && client->isOpen(); ++report) {
      if (report == answer) client::AppendFrame(output, client::command::kIsAdmin, "0");
      if (report % kReportsPerTurn == 0) {
        client->write(output.data(), static_cast<qint64>(output.size()));
        client->waitForBytesWritten(1000);
        client->waitForReadyRead(0);
        // The question for members and rights, answered once all members have been reported.
        if (!client->readAll().isEmpty()) answer = report + kMembers;
        output.clear();
        timespec cpu{};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &cpu);
        myCpu = static_cast<double>(cpu.tv_sec) + static_cast<double>(cpu.tv_nsec) / 1e9;
        std::this_thread::sleep_for(kTurn);
      }
      const auto round = report / kMembers;
      Append(output, static_cast<int>(report % kMembers), static_cast<double>(round));
    }
  }

  static void Append(std::string& output, int member, double step) {
    const double angle = step / 20 + member;
    const int x = 400 + member % 40 * 380 + static_cast<int>(150 * std::cos(angle));
    const int y = 400 + member / 40 * 600 + static_cast<int>(150 * std::sin(angle));
    client::AppendFrame(output, client::command::kMember,
                        "member " + std::to_string(member) + "|" + std::to_string(x) + "," +
                            std::to_string(y) + ",0," + std::to_string(50 + member % 50) + "," +
                            (member % 17 == 0 ? "1" : "0") + "," + (member % 29 == 0 ? "1" : "0"));
  }

  std::uint16_t myPort = 0;
  std::atomic<bool> myStops = false;
  std::atomic<double> myCpu = 0;
  std::thread myThread;
};

double ProcessCpuSeconds() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  const auto of = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
  };
  return of(usage.ru_utime) + of(usage.ru_stime);
}

long PeakMib() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_maxrss / 1024;
}

// Runs the window for a while and prints the cost.
void Measure(const char* what, MapApplication& application, const Feeder& feeder) {
  application.durations.clear();
  const double cpuBefore = ProcessCpuSeconds() - feeder.CpuSeconds();
  const auto begin = std::chrono::steady_clock::now();
  QTimer::singleShot(kDuration, &application, [] { QApplication::exit(); });
  QApplication::exec();
  const double elapsed =
      std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
  const double cpu = ProcessCpuSeconds() - feeder.CpuSeconds() - cpuBefore;
  std::vector<double>& times = application.durations;
  std::sort(times.begin(), times.end());
  std::fprintf(stderr,
               "%s: %zu events; ms: p99 %.2f, p99.9 %.2f, longest %.2f; CPU %.0f %% of a core; "
               "peak memory %ld MiB\n",
               what, times.size(), times[times.size() * 99 / 100], times[times.size() * 999 / 1000],
               times.back(), 100 * cpu / elapsed, PeakMib());
}

// Writes a drawn map as a PNG file, row by row.
bool WritePicture(const QString& name) {
  std::FILE* file = std::fopen(QFile::encodeName(name).constData(), "wb");
  if (file == nullptr) return false;
  png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
  png_infop info = png_create_info_struct(png);
  png_init_io(png, file);
  png_set_compression_level(png, 1);
  png_set_IHDR(png, info, kSide, kSide, 8, PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE,
               PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
  png_write_info(png, info);
  std::vector<png_byte> row(std::size_t{3} * kSide);
  std::vector<double> waves(std::size_t{2} * kSide);
  for (std::size_t i = 0; i < waves.size(); ++i)
    waves[i] = std::sin(static_cast<double>(i) / 300);
  for (int y = 0; y < kSide; ++y) {
    for (int x = 0; x < kSide; ++x) {
      const auto wave = [&](int at) { return waves[static_cast<std::size_t>(at)]; };
      const double height = wave(x / 2) + wave(y) + wave(x + y);
      const int noise = (x * 7919 + y * 104'729) % 13;
      row[3 * static_cast<std::size_t>(x)] = static_cast<png_byte>(110 + 30 * height + noise);
      row[3 * static_cast<std::size_t>(x) + 1] = static_cast<png_byte>(130 + 20 * height + noise);
      row[3 * static_cast<std::size_t>(x) + 2] = static_cast<png_byte>(90 - 20 * height + noise);
    }
    png_write_row(png, row.data());
  }
  png_write_end(png, info);
  png_destroy_write_struct(&png, &info);
  return std::fclose(file) == 0;
}

// Landmarks with names, evenly spread over the members' part of the map.
QList<Landmark> SomeLandmarks() {
  QList<Landmark> landmarks(kLandmarks);
  for (int i = 0; i < kLandmarks; ++i) {
    landmarks[i].name = QStringLiteral("landmark %1").arg(i);
    landmarks[i].icon = QLatin1String(
        kLandmarkIcons.at(static_cast<std::size_t>(i) % kLandmarkIcons.size()).name.data());
    const int row = i / 25;
    landmarks[i].at = QPointF(100 + i % 25 * 630, 100 + row * 780);
  }
  return landmarks;
}

// Alarms of every kind for everybody. Half of the members have too few hit points, and circles are
// entered all the time.
AlarmRules AllAlarms() {
  AlarmRules rules;
  rules.who.fill(AlarmFor::Everybody);
  rules.isShare = false;
  rules.hitPoints = 75;
  for (int i = 0; i < AlarmRules::kMaxCircles; ++i)
    rules.circles.append({QStringLiteral("circle %1").arg(i), 0, {400 + i * 760, 7600}, 400});
  return rules;
}

// Moves and scales the map like a restless user.
void Wander(MapView& map, int turn) {
  if (turn % 40 == 0) {
    turn % 240 < 120 ? map.ZoomIn() : map.ZoomOut();
    return;
  }
  map.horizontalScrollBar()->setValue(map.horizontalScrollBar()->value() +
                                      (turn % 600 < 300 ? 12 : -12));
  map.verticalScrollBar()->setValue(map.verticalScrollBar()->value() + (turn % 800 < 400 ? 7 : -7));
}

}  // namespace

int main(int argc, char** argv) {
  MapApplication application(argc, argv);
  const QTemporaryDir folder;
  MapPicture picture;
  picture.kind = MapPicture::Kind::Image;
  picture.path = folder.filePath("large.png");
  if (!WritePicture(picture.path)) return 1;

  Feeder feeder;
  MapWindow window(folder.filePath("map.ini"), folder.filePath("cache"));
  window.resize(1280, 800);
  window.show();
  window.Wire().Open({"127.0.0.1", feeder.Port(), {"Bench", "digest", "Observer"}});
  while (window.Wire().Others().Count() < kMembers)
    QApplication::processEvents(QEventLoop::WaitForMoreEvents);
  window.map->ShowAll();
  Measure("map, 1,000 members on a grid", application, feeder);
  window.Marks().Board().Add(SomeLandmarks());
  Measure("map, 1,000 members and 500 landmarks on a grid", application, feeder);
  window.Alarms().Watch().SetRules(AllAlarms());
  Measure("map, with alarms for everybody, too", application, feeder);

  const auto begin = std::chrono::steady_clock::now();
  window.SetPicture(0, picture);
  application.durations.clear();
  while (window.map->Scene()->PictureBounds().isNull())
    QApplication::processEvents(QEventLoop::WaitForMoreEvents);
  const double took =
      std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
  std::vector<double>& times = application.durations;
  std::sort(times.begin(), times.end());
  std::fprintf(stderr, "map, cutting 16,384 x 16,384: %.1f s; events meanwhile p99 %.2f ms\n", took,
               times[times.size() * 99 / 100]);

  window.map->ShowAll();
  QTimer timer;
  int turn = 0;
  QObject::connect(&timer, &QTimer::timeout, &window, [&] { Wander(*window.map, ++turn); });
  timer.start(milliseconds(33));
  Measure("map, moved and scaled above the picture", application, feeder);
  if (window.Wire().CurrentState() == client::Connection::State::Online) return 0;
  std::fprintf(stderr, "map: the figures do not count, since the connection was lost:\n%s\n",
               qUtf8Printable(window.txtMessages->toPlainText()));
  return 1;
}
