#include "updater/version_checker.h"

#include <gmock/gmock.h>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/test_client.h"
#include "tests/support/web_server.h"
#include "updater/update_platform.h"
#include "updater/version.h"

using namespace corvane;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

std::string Catalogue(int build, int major = 0) {
  const auto element = [](const std::string& name, const std::string& text) {
    return "<" + name + ">" + text + "</" + name + ">";
  };
  return OkReply("<r><a><AppName>corvaneserver</AppName>" +
                 element("CurrentMajorVersion", std::to_string(major)) +
                 element("CurrentBuildVersion", std::to_string(build)) +
                 element(DownloadElement(), " http://h/setup.deb\n") +
                 element("Changes", "Faster") + "</a></r>");
}

class VersionCheckerTest : public testing::Test {
 protected:
  // A checker that writes down what it says.
  std::unique_ptr<VersionChecker> CheckerOf(const std::string& address) {
    auto checker = std::make_unique<VersionChecker>(address, "CorvaneServer", client,
                                                    [this](const MessageBox& box) {
                                                      said.push_back(box.text);
                                                      return MessageBox::Answer::OK;
                                                    });
    checker->UpdateFound = [this](const Update& update) {
      said.push_back(update.appName + " " + update.newVersion + " " + update.changes + " " +
                     update.downloadURL);
    };
    return checker;
  }

  WebServer server;
  HttpClient client{"Corvane-Test/1.2"};
  std::vector<std::string> said;
};

}  // namespace

TEST_F(VersionCheckerTest, TellsOfANewerBuildOrThatThereIsNone) {
  const std::string recent = "You have the most recent version of CorvaneServer.";
  const int running = RunningVersion().build;
  const std::string found =
      "CorvaneServer 0.0.0." + std::to_string(running + 1) + " Faster http://h/setup.deb";
  const struct {
    const char* what;
    std::string reply;
    std::string loud;
    std::string quiet;
  } cases[] = {
      {"newer", Catalogue(running + 1), found, found},
      {"same build of a higher release", Catalogue(running, 9), recent, ""},
      {"older", Catalogue(running - 1, 9), recent, ""},
      {"other applications", OkReply("<r><a><AppName>Other</AppName></a></r>"), recent, ""},
      {"no document", OkReply("<r>"), recent, ""},
      {"error", "HTTP/1.1 404 No\r\n\r\n" + Catalogue(running + 1), recent, ""},
  };
  for (const auto& row : cases) {
    for (const bool quiet : {false, true}) {
      server.answers["/base/applications.xml"] = {row.reply};
      server.requests.clear();
      said.clear();
      const auto checker = CheckerOf(server.Address("/base//"));
      checker->CheckForNewVersion(quiet);
      EXPECT_THAT(said, IsEmpty());
      const std::string expected = quiet ? row.quiet : row.loud;
      if (expected.empty()) {
        PumpUntil([&] { return !server.requests.empty(); });
        PumpFor(std::chrono::milliseconds(20));
        EXPECT_THAT(said, IsEmpty()) << row.what;
      } else {
        PumpUntil([&] { return !said.empty(); });
        EXPECT_THAT(said, ElementsAre(expected)) << row.what;
      }
    }
  }
}

TEST_F(VersionCheckerTest, WithoutAnAddressAsksNothingAndFindsNoneNewer) {
  const auto checker = CheckerOf("");
  checker->CheckForNewVersion(false);
  EXPECT_TRUE(PumpUntil([&] { return !said.empty(); }));
  EXPECT_THAT(said, ElementsAre("You have the most recent version of CorvaneServer."));
  EXPECT_THAT(server.requests, IsEmpty());
}

TEST_F(VersionCheckerTest, ChecksOneAtATimeAndEndsWithItsOwner) {
  server.answers["/applications.xml"] = {Catalogue(RunningVersion().build + 1)};
  auto checker = CheckerOf(server.Address());
  // Set late: it counts when the catalogue has come.
  std::optional<Update> got;
  checker->UpdateFound = [&](const Update& update) {
    got = update;
    checker.reset();
  };
  checker->CheckForNewVersion(false);
  checker->CheckForNewVersion(false);
  checker->DownloadLocation = "/elsewhere";
  checker->UseActualFilename = false;
  ASSERT_TRUE(PumpUntil([&] { return got.has_value(); }));
  EXPECT_EQ(checker, nullptr);
  EXPECT_EQ(got->downloadLocation, "/elsewhere");
  EXPECT_FALSE(got->useActualFilename);
  EXPECT_EQ(server.requests.size(), 1U);

  checker = CheckerOf(server.Address());
  checker->CheckForNewVersion(false);
  PumpUntil([&] { return server.requests.size() == 2; });
  checker.reset();
  PumpFor(std::chrono::milliseconds(20));
  EXPECT_THAT(said, IsEmpty());
}
