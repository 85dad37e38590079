#include <QFile>
#include <QFileInfo>

#include "tests/control/control_fixture.h"

namespace corvane {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

// The scripts that the package has as examples. They find corvanectl on the path.
class ExamplesTest : public ControlTest {
 protected:
  void Start(QProcess& script, const QString& name, const QStringList& arguments) {
    auto environment = QProcessEnvironment::systemEnvironment();
    environment.insert("PATH", QFileInfo(CORVANECTL).path() + ':' + environment.value("PATH"));
    environment.insert("XDG_DATA_HOME", myFolder.path());
    script.setProcessEnvironment(environment);
    script.start(EXAMPLES + name, arguments);
  }
  // Runs corvane-metrics and returns the file that it writes.
  std::string Figures() {
    QProcess script;
    Start(script, "corvane-metrics", {myFolder.path()});
    EXPECT_TRUE(PumpUntil([&] { return script.state() == QProcess::NotRunning; }));
    QFile file(myFolder.filePath("corvane.prom"));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    return file.readAll().toStdString();
  }
};

TEST_F(ExamplesTest, MetricsAreWrittenAndSayWhenTheServerIsDown) {
  EXPECT_THAT(Figures(), testing::AllOf(HasSubstr("\ncorvane_logins_total 2\n"),
                                        testing::EndsWith("\ncorvane_up 1\n")));
  QFile::remove(myFolder.filePath("corvane-server.sock"));
  EXPECT_THAT(Figures(), testing::AllOf(StartsWith("# HELP corvane_up"),
                                        testing::EndsWith("\ncorvane_up 0\n")));
}

TEST_F(ExamplesTest, HookPostsEventsAlsoAfterARefusal) {
  QProcess script;
  Start(script, "corvane-hook", {DisplayText(myWebServer.Address("/hook"))});
  const ServerEvent event{.kind = ServerEvent::Kind::Kick, .user = "@all", .text = "rude"};
  // Until it follows. The web server answers with 404.
  ASSERT_TRUE(PumpUntil([&] {
    myApp.Op().Events().Raise(event);
    return myWebServer.requests.size() >= 2;
  })) << script.readAllStandardError().toStdString();
  EXPECT_THAT(myWebServer.requests[1], StartsWith("POST /hook "));
  script.kill();
  script.waitForFinished();
}

}  // namespace
}  // namespace corvane
