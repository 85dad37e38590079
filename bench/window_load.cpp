// The window under load: 10,000 users log in within half a minute and out again within another,
// while 200,000 status lines arrive. Prints the longest events, which block the window and the
// server. The users are rows without connections, whose cost the load runs measure.

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdio>
#include <string>
#include <vector>

#include <QTemporaryDir>
#include <QTimer>

#include "app/app.h"
#include "bench/event_times.h"
#include "console/application.h"
#include "console/wnd_main.h"
#include "tests/support/other_program.h"

namespace {

using namespace corvane;
using std::chrono::milliseconds;

constexpr int kUsers = 10'000;
constexpr int kLines = 200'000;
constexpr milliseconds kTurn{10};
constexpr int kTurns = 2 * 30'000 / 10;
constexpr int kUsersPerTurn = 1 + 2 * kUsers / kTurns;
constexpr int kLinesPerTurn = 1 + kLines / kTurns;

using LoadedApplication = MeasuredApplication<Application>;

std::string UserName(int number) {
  return "user " + std::to_string(number);
}

// One turn of the load. `coming` users have logged in so far, `going` have logged out.
void TakeTurn(wndMain& window, int& coming, int& going) {
  for (int i = 0; i < kUsersPerTurn; ++i) {
    if (coming < kUsers) {
      window.Users().Add(UserName(coming++), "Network", {});
    } else if (going < kUsers) {
      window.Users().Remove(UserName(going++), "Network");
    }
  }
  for (int i = 0; i < kLinesPerTurn; ++i)
    window.sSocket.CallStatusMessage({"192.0.2.1: User Logged In (somebody)"});
}

}  // namespace

int main(int argc, char** argv) {
  LoadedApplication application(argc, argv);
  const QTemporaryDir folder;
  MakeDatabase(folder.filePath("serverdb.rsd"));
  App app(folder.path(), MessageToStandardError);
  if (!app.Open()) return 1;
  wndMain window(app, [] { return true; });
  window.show();

  int coming = 0;
  int going = 0;
  int turns = 0;
  QTimer timer;
  QObject::connect(&timer, &QTimer::timeout, &window, [&] {
    TakeTurn(window, coming, going);
    if (++turns == kTurns) LoadedApplication::exit();
  });
  timer.start(kTurn);
  LoadedApplication::exec();

  std::vector<double>& durations = application.durations;
  std::sort(durations.begin(), durations.end());
  const std::size_t count = durations.size();
  std::fprintf(stderr,
               "window under load: %d users in and %d out, %d status lines, %zu events; "
               "ms: p99 %.2f, p99.9 %.2f, longest %.2f\n",
               coming, going, window.Status().rowCount(), count, durations[count * 99 / 100],
               durations[count * 999 / 1000], durations.back());
  return 0;
}
