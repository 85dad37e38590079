#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdlib>
#include <string>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <QTemporaryDir>
#include <gmock/gmock.h>

#include "platform/service_manager.h"

namespace corvane {
namespace {

TEST(ServiceManager, GetsTheStateIfItListens) {
  const QTemporaryDir folder;
  for (const std::string& place :
       {folder.filePath("notify").toStdString(), "@corvane-test-" + std::to_string(getpid())}) {
    SCOPED_TRACE(place);
    const int manager = socket(AF_UNIX, SOCK_DGRAM | SOCK_NONBLOCK, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    place.copy(address.sun_path, sizeof address.sun_path);
    if (place.front() == '@') address.sun_path[0] = '\0';
    ASSERT_EQ(bind(manager, reinterpret_cast<const sockaddr*>(&address),
                   static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + place.size())),
              0);
    const auto heard = [manager] {
      std::array<char, 100> bytes{};
      const ssize_t count = recv(manager, bytes.data(), bytes.size(), 0);
      return std::string(bytes.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    };
    NotifyServiceManager(ServiceState::Ready);
    EXPECT_EQ(heard(), "") << "it did not ask";
    setenv("NOTIFY_SOCKET", place.c_str(), 1);
    {
      const ServiceReload reload;
      EXPECT_THAT(heard(), testing::MatchesRegex("RELOADING=1\nMONOTONIC_USEC=[1-9][0-9]+"));
    }
    EXPECT_EQ(heard(), "READY=1");
    NotifyServiceManager(ServiceState::Stopping);
    EXPECT_EQ(heard(), "STOPPING=1");
    close(manager);
    NotifyServiceManager(ServiceState::Ready);  // to nobody
    unsetenv("NOTIFY_SOCKET");
  }
}

}  // namespace
}  // namespace corvane
