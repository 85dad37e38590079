#include "tests/app/app_fixture.h"

#include "storage/app_settings.h"

namespace corvane {

AppFixture::AppFixture(bool isHardened) {
  const QString file = myFolder.filePath("serverdb.rsd");
  MakeDatabase(file);
  OtherProgram(file).Run(
      "INSERT INTO networks VALUES ('North','secret',5,1),('So\nuth','secret',5,1)");
  AppSettings settings(myFolder.path());
  settings.SetValue("AttachedNIC", "none");
  settings.SetValue("AttachedPort", "0");
  if (isHardened) settings.SetValue("Hardened", "1");
  settings.SetValue("UpdateAddress", myWebServer.Address());
  EXPECT_TRUE(myApp.Open());
}

std::string AppFixture::Query(const std::string& statements) {
  return OtherProgram(myFolder.filePath("serverdb.rsd")).Run(statements);
}

std::unique_ptr<TestClient> AppFixture::LoggedIn(const std::string& user,
                                                 const std::string& network, const char* from) {
  auto client = std::make_unique<TestClient>(myApp.Listener().Port(), from);
  EXPECT_TRUE(client->Login(network, "secret", user)) << user;
  return client;
}

}  // namespace corvane
