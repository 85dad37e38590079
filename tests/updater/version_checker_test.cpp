#include "updater/version_checker.h"

#include <gmock/gmock.h>

#include "tests/support/test_client.h"
#include "tests/support/web_server.h"
#include "updater/update_platform.h"
#include "updater/version.h"

namespace corvane {
namespace {

using testing::IsEmpty;

const std::string kRecent = "You have the most recent version of CorvaneServer.";

// A catalogue whose build is higher than the running one by this number.
std::string Catalogue(int step) {
  const std::string build = std::to_string(RunningVersion().build + step);
  const std::string get = DownloadElement();
  return "<r><a><AppName>corvaneserver</AppName><CurrentMajorVersion>9</CurrentMajorVersion>"
         "<CurrentBuildVersion>" +
         build + "</CurrentBuildVersion><" + get + ">http://h/x</" + get + "></a></r>";
}

class VersionCheckerTest : public testing::Test {
 protected:
  void Make(const std::string& address) {
    const auto showMessage = [this](const MessageBox& box) {
      checker.reset();
      said = box.text;
      return MessageBox::Answer::OK;
    };
    checker = std::make_unique<VersionChecker>(address, "CorvaneServer", client, showMessage);
    connection = checker->UpdateFound.Connect([this](const Update& update) {
      checker.reset();
      said = update.appName + " " + update.newVersion + " " + update.downloadURL;
    });
  }
  // Waits for the outcome of a check, which destroys the checker.
  std::string Said() {
    PumpUntil([&] { return !checker; });
    return std::exchange(said, {});
  }

  WebServer server;
  HttpClient client{"Corvane-Test/1.2"};
  std::string said;
  std::unique_ptr<VersionChecker> checker;
  SignalConnection connection;
};

TEST_F(VersionCheckerTest, ReportsANewerBuildOrUnlessQuietThatThereIsNone) {
  const std::string newer =
      "CorvaneServer 9.0.0." + std::to_string(RunningVersion().build + 1) + " http://h/x";
  const struct {
    std::string reply;
    std::string result;
  } cases[] = {
      {OkReply(Catalogue(1)), newer},
      {OkReply(Catalogue(0)), kRecent},
      {OkReply("<r>"), kRecent},
      {"HTTP/1.1 404 No\r\n\r\n" + Catalogue(1), kRecent},
  };
  for (const auto& row : cases) {
    server.answers["/base/applications.xml"] = {row.reply};
    Make(server.Address("/base//"));
    checker->CheckForNewVersion(true);
    if (row.result == kRecent) {
      // Ignored until the first check, which is quiet, has ended.
      EXPECT_TRUE(PumpUntil([&] {
        if (checker) checker->CheckForNewVersion(false);
        return server.requests.size() >= 2 && !checker;  // more if Qt asks again
      }));
    }
    EXPECT_EQ(Said(), row.result) << row.reply;
    server.requests.clear();
  }
  Make("");
  checker->CheckForNewVersion(false);
  EXPECT_EQ(Said(), kRecent);
  EXPECT_THAT(server.requests, IsEmpty());
}

TEST_F(VersionCheckerTest, EndsWithItsOwner) {
  server.answers["/applications.xml"] = {OkReply(Catalogue(1))};
  Make(server.Address());
  checker->CheckForNewVersion(false);
  checker.reset();
  PumpFor(std::chrono::milliseconds(20));
  EXPECT_EQ(said, "");
}

}  // namespace
}  // namespace corvane
