#include "server/rules.h"

#include <algorithm>
#include <deque>
#include <set>
#include <utility>

#include <gmock/gmock.h>

#include "framework/exceptions.h"
#include "net/os_socket.h"
#include "server/setting.h"
#include "storage/admins_table.h"
#include "storage/app_settings.h"
#include "tests/support/test_server.h"

namespace corvane {
namespace {

using namespace std::chrono_literals;
using namespace std::string_literals;

constexpr const char* kHome = "127.0.0.1";

std::unique_ptr<TestClient> LoggedIn(TestServer& server, const std::string& user,
                                     const char* from = kHome) {
  auto client = std::make_unique<TestClient>(server.Port(), from);
  EXPECT_TRUE(client->Login("A", "secret", user)) << user;
  return client;
}

// A client whose password is next.
std::unique_ptr<TestClient> BeforePassword(TestServer& server) {
  auto client = std::make_unique<TestClient>(server.Port());
  client->Receive();
  client->Send(1, "A");
  EXPECT_EQ(client->Receive(), (WireMessage{2, "OK"}));
  return client;
}

// Waits for the end rather than looking once, since a busy machine may be late.
std::string ClosedOrNot(const TestClient& client, std::chrono::milliseconds patience = 400ms) {
  for (auto waited = 0ms; waited < patience && !client.IsClosed(); waited += 20ms)
    PumpFor(20ms);
  return client.IsClosed() ? "closed " : "stays ";
}

// The commands that arrive before the answer to a question.
std::string Heard(TestClient& client) {
  client.Send(9, "");
  std::string commands;
  for (auto message = client.Receive(); message && message->command != 9;
       message = client.Receive())
    commands += std::to_string(message->command) + " ";
  return commands;
}

// Each of these returns, in a few words, what happens under the server's rules.

std::string MessageWhileAClientHasNoNetwork(TestServer& server) {
  TestClient stranger(server.Port());
  const auto ann = LoggedIn(server, "Ann");
  try {
    server.listener->BroadcastMessage("x", "(All Networks)");
  } catch (const NilObjectException&) {
    return "ends the program";
  }
  return "Ann " + Heard(*ann) + "stranger " + Heard(stranger);
}

std::string NewsOfTheNetwork(TestServer& server) {
  const auto stranger = BeforePassword(server);
  const auto ann = LoggedIn(server, "Ann");
  const auto bob = LoggedIn(server, "Bob");
  bob->Send(4, "1,2,3,4,0,0");
  bob->Drain();
  server.listener->BroadcastMessage("x", "A");
  bob->Close();
  EXPECT_TRUE(PumpUntil([&] { return server.ActiveCount() == 2; }));
  server.listener->DisconnectAllClientsOnNetwork(server.listener->FindNetwork("A"));
  EXPECT_EQ(server.Fault(), "");
  return "Ann " + Heard(*ann) + "stranger " + Heard(*stranger);
}

std::string NameThatIsMoreThanAName(TestServer& server) {
  EXPECT_TRUE(AdminsTable(server.database).Add("Ann", "10.0.0.1", "A"));
  const auto client = LoggedIn(server, "x' OR '1'='1' --");
  client->Send(9, "");
  return client->Receive()->payload;
}

std::string NoLogin(TestServer& server) {
  const auto ann = LoggedIn(server, "Ann");
  const TestClient silent(server.Port());
  const auto seated = BeforePassword(server);
  std::string outcome = ClosedOrNot(silent, 1500ms);
  outcome += ClosedOrNot(*seated);
  return outcome + ClosedOrNot(*ann) +
         std::to_string(server.listener->FindNetwork("A")->CurrentUsers) + " seats";
}

std::string ManyWhoDoNotLogin(TestServer& server) {
  // All at once: none is counted yet when the last is accepted.
  std::vector<os::SocketHandle> strangers;
  for (int i = 0; i < 11; ++i) {
    strangers.push_back(os::OpenSocket().handle);
    os::Connect(strangers.back(), {kHome, static_cast<std::uint16_t>(server.Port())});
  }
  const auto other = LoggedIn(server, "Ann", "127.0.0.2");
  const std::size_t stay = server.ActiveCount() - 1;
  for (const os::SocketHandle stranger : strangers)
    os::CloseSocket(stranger);
  EXPECT_TRUE(PumpUntil([&] { return server.ActiveCount() == 1; }));
  EXPECT_EQ(TestClient(server.Port()).Receive(), (WireMessage{1, "Network"}));
  // Refusals after the first are reported together; then the address is forgotten.
  EXPECT_TRUE(PumpUntil([&] { return server.listener->Context.addresses.Size() <= 1; }));
  std::string reported;
  for (const std::string& line : server.status)
    if (line.find("Refused") != std::string::npos) reported += line + " ";
  return std::to_string(stay) + " stay " + reported;
}

std::string ManyWhoLogin(TestServer& server) {
  std::deque<TestClient> clients;
  int count = 0;
  while (count < 65 &&
         clients.emplace_back(server.Port()).Login("A", "secret", std::to_string(count)))
    ++count;
  return std::to_string(count);
}

// Their peers read nothing, so the connections are still draining after the server closed them.
std::string ManyWhoAreClosed(TestServer& server) {
  std::vector<os::SocketHandle> peers;
  for (int i = 0; i < 8; ++i) {
    peers.push_back(SilentPeer(server.Port()));
    EXPECT_TRUE(PumpUntil([&] { return server.ActiveCount() == 1; }));
    const auto session = server.Active(0);
    for (int part = 0; part < 12; ++part)
      session->SendMessage(998, std::string(1'000'000, 'x'));
    session->Close();
  }
  TestClient next(server.Port());
  const bool isRefused = !next.Receive();
  std::ranges::for_each(peers, os::CloseSocket);
  EXPECT_TRUE(PumpUntil([&] { return TestClient(server.Port()).Receive().has_value(); }));
  return isRefused ? "refused" : "greeted";
}

// Whether another client that asks later is answered earlier.
bool IsKeptWaiting(TestServer& server, TestClient& other, TestClient& guesser,
                   const std::string& password) {
  const std::size_t before = server.status.size();
  guesser.Send(2, PasswordDigest(password));
  guesser.Send(3, "");  // a right password alone leaves no line in the log
  other.Drain();
  return server.status.size() == before;
}

std::string WrongPasswords(TestServer& server) {
  const auto other = LoggedIn(server, "Ann", "127.0.0.2");
  std::string kept;
  for (int wrong = 0; wrong <= 8; ++wrong) {
    // A new connection for each guess: only the address can be remembered.
    const auto guesser = BeforePassword(server);
    const auto begin = std::chrono::steady_clock::now();
    const bool isRight = wrong == 8;
    const bool waits = IsKeptWaiting(server, *other, *guesser, isRight ? "secret" : "guess");
    auto answer = guesser->Receive();
    while (answer == WireMessage{6, ""})  // the previous guesser left
      answer = guesser->Receive();
    EXPECT_EQ(answer, (WireMessage{3, isRight ? "OK" : "FAIL"}));
    if (wrong <= 4 && waits) kept += "too early ";
    if (isRight && waits)
      kept += std::chrono::steady_clock::now() - begin >= 390ms ? "400 ms " : "too short ";
  }
  EXPECT_TRUE(PumpUntil([&] { return server.listener->Context.addresses.Size() <= 1; }));
  return kept + (IsKeptWaiting(server, *other, *BeforePassword(server), "x") ? "still" : "");
}

std::string LongMessages(TestServer& server) {
  std::string outcome;
  const auto isLeft = [&](TestClient& client, std::size_t length) {
    client.Send(8, std::string(length - 8, 'x'));
    client.Send(9, "");
    outcome += client.Receive() ? "stays " : "closed ";
  };
  TestClient stranger(server.Port());
  stranger.Receive();
  isLeft(stranger, 4096);
  isLeft(stranger, 4097);
  const auto ann = LoggedIn(server, "Ann");
  isLeft(*ann, 65'536);
  isLeft(*ann, 65'537);
  return outcome;
}

// Whether answers are delayed if 23 questions come at once before the login, and 537 after it.
std::string FastMessages(TestServer& server) {
  const auto ann = LoggedIn(server, "Ann");
  TestClient stranger(server.Port());
  stranger.Receive();
  std::string outcome;
  for (const auto& [client, count] : {std::pair{&stranger, 23}, {ann.get(), 537}}) {
    const auto begin = std::chrono::steady_clock::now();
    std::string questions;
    for (int i = 0; i < count; ++i)
      questions += WireBytes(999, "");
    client->SendBytes(questions);
    for (int i = 0; i < count; ++i)
      EXPECT_EQ(client->Receive(), (WireMessage{999, "BYE"})) << i;
    outcome += std::chrono::steady_clock::now() - begin >= 290ms ? "waits " : "soon ";
  }
  return outcome;
}

std::string KickedAndBanned(TestServer& server) {
  const auto kicked = LoggedIn(server, "Ann");
  const auto banned = LoggedIn(server, "Bob", "127.0.0.2");
  server.listener->KickUser("Ann", "A", "x");
  server.listener->Ban("127.0.0.2", "op", "x", "A", server.SessionOf("Bob").get());
  TestClient refused(server.Port(), "127.0.0.2");
  EXPECT_EQ(kicked->Receive()->command, 996);
  EXPECT_EQ(banned->Receive()->command, 997);
  EXPECT_EQ(refused.Receive()->command, 997);
  return ClosedOrNot(*kicked) + ClosedOrNot(*banned) + ClosedOrNot(refused);
}

std::string BansOfOthers(TestServer& server) {
  EXPECT_TRUE(AdminsTable(server.database).Add("Ann", kHome, "A"));
  server.Query(
      "INSERT INTO bans(address, network) VALUES('10.0.0.1','a'),('10.0.0.2','B'),"
      "('10.0.0.3','A')");
  const QDateTime tomorrow = QDateTime::currentDateTimeUtc().addDays(1);
  EXPECT_TRUE(server.listener->Context.bans.Add("10.0.0.4", "Server Admin", "", "A", tomorrow));
  const auto ann = LoggedIn(server, "Ann");
  ann->SendBytes(WireBytes(13, "") + WireBytes(14, "1") + WireBytes(14, "2") + WireBytes(14, "4") +
                 WireBytes(13, ""));
  const std::string list = ann->Receive()->payload;
  ann->Receive();
  return "sees " + std::to_string(std::ranges::count(list, '\0')) + ", left " +
         server.Query("SELECT id FROM bans");
}

std::string MisleadingNames(TestServer& server) {
  std::string taken;
  for (const std::string& name : {"a\tb"s, "\x7F"s, "\xC2\x85"s, "Ann\xE2\x80\x8B"s, "bob|9,9"s,
                                  std::string(65, 'n'), std::string(64, 'n'), "Zo\xC3\xAB"s}) {
    TestClient client(server.Port());
    taken += client.Login("A", "secret", name) ? "yes " : "no ";
  }
  return taken;
}

std::string ManyLines(TestServer& server) {
  EXPECT_TRUE(PumpUntil([&] { return server.ActiveCount() == 0; }));
  server.status.clear();
  for (int i = 0; i < 60; ++i)
    TestClient(server.Port()).Receive();
  EXPECT_TRUE(PumpUntil([&] { return server.ActiveCount() == 0; }));
  const auto lines = static_cast<int>(server.status.size());
  EXPECT_TRUE(PumpUntil([&] { return server.listener->Context.addresses.Size() == 0; }));
  const std::string left = "127.0.0.1: Lines Left Out (" + std::to_string(120 - lines) + ")";
  if (lines == 120) return "all";
  return lines >= 100 && lines < 115 && server.status.back() == left ? "bounded"
                                                                     : server.status.back();
}

std::string SeatsOfStrangers(TestServer& server) {
  server.listener->FindNetwork("A")->MaxUsers = 1;
  const auto stranger = BeforePassword(server);
  TestClient ann(server.Port());
  if (!ann.Login("A", "secret", "Ann")) return "kept";
  stranger->Send(2, PasswordDigest("secret"));
  EXPECT_EQ(stranger->Receive(), (WireMessage{3, "FAIL"}));
  return "free";
}

// A character of one byte, then six hundred of two bytes.
std::string LongReasons(TestServer& server) {
  const std::string reason = "x" + QString(600, QChar(0xE4)).toStdString();
  const auto ann = LoggedIn(server, "Ann");
  server.listener->Ban(kHome, "op", reason, "A", server.SessionOf("Ann").get());
  return std::to_string(ann->Receive()->payload.size()) + " " +
         server.Query("SELECT length(CAST(reason AS BLOB)) FROM bans");
}

struct RuleRow {
  const char* name;
  std::string (*happens)(TestServer& server);
  const char* classic;
  const char* hardened;
};

class RulesTest : public testing::TestWithParam<RuleRow> {};

TEST_P(RulesTest, EachRuleDiffersBetweenClassicAndHardened) {
  for (const bool isHardened : {false, true}) {
    TestServer server(0, isHardened ? HardenedInAHurry() : Rules::Classic());
    server.AddNetwork("A", "secret", 100);
    EXPECT_EQ(GetParam().happens(server), isHardened ? GetParam().hardened : GetParam().classic);
  }
}

constexpr RuleRow kRuleRows[] = {
    {"message", MessageWhileAClientHasNoNetwork, "ends the program", "Ann 998 stranger 1 "},
    {"news", NewsOfTheNetwork, "Ann 5 998 6 999 stranger 5 998 6 999 ",
     "Ann 5 998 6 999 stranger "},
    {"values", NameThatIsMoreThanAName, "1", "0"},
    {"time", NoLogin, "stays stays stays 2 seats", "closed closed stays 1 seats"},
    {"not_logged_in", ManyWhoDoNotLogin, "11 stay ",
     "8 stay 127.0.0.1: Connections Refused (1) 127.0.0.1: Connections Refused (2) "},
    {"closed", ManyWhoAreClosed, "greeted", "refused"},
    {"in_all", ManyWhoLogin, "65", "64"},
    {"passwords", WrongPasswords, "", "400 ms "},
    {"lengths", LongMessages, "stays stays stays stays ", "stays closed stays closed "},
    {"rate", FastMessages, "soon soon ", "waits waits "},
    {"notices", KickedAndBanned, "stays stays stays ", "closed closed closed "},
    {"bans", BansOfOthers, "sees 4, left 3;", "sees 2, left 2;3;4;"},
    {"lines", ManyLines, "all", "bounded"},
    {"names", MisleadingNames, "yes yes yes yes yes yes yes yes ", "no no no no no no yes yes "},
    {"seats", SeatsOfStrangers, "kept", "free"},
    {"reasons", LongReasons, "1201 1201;", "1023 1023;"},
};
INSTANTIATE_TEST_SUITE_P(Table, RulesTest, testing::ValuesIn(kRuleRows),
                         [](const auto& row) { return row.param.name; });

TEST(Rules, TrustedAddressIsNeitherCountedNorDelayed) {
  Rules rules = HardenedInAHurry();
  rules.trustedAddresses = AddressRanges("127.0.0.0/28");
  TestServer server(0, rules);
  server.AddNetwork("A", "secret", 100);
  EXPECT_EQ(ManyWhoDoNotLogin(server), "11 stay ");
  EXPECT_EQ(WrongPasswords(server), "");
  EXPECT_EQ(ManyLines(server), "all");
  EXPECT_EQ(FastMessages(server), "soon soon ");
}

TEST(Rules, NumberOfRememberedAddressesIsBounded) {
  TestServer server(0, Rules::Hardened());
  AddressTable& addresses = server.listener->Context.addresses;
  for (int i = 0; i < 5 * 10'001; ++i)
    addresses.NoteWrongPassword(std::to_string(i / 5));
  EXPECT_EQ(addresses.Size(), 10'000U);
  EXPECT_EQ(addresses.PasswordDelay("0"), 0s);
  EXPECT_EQ(addresses.PasswordDelay("1"), 1s);
  for (int i = 0; i < 10; ++i)
    addresses.NoteWrongPassword("1");
  EXPECT_EQ(addresses.PasswordDelay("1"), 30s) << "the longest";
}

TEST(Rules, WrongPasswordsOfAnEarlierPeriodNoLongerCount) {
  TestServer server(0, HardenedInAHurry());
  AddressTable& addresses = server.listener->Context.addresses;
  const auto period = server.listener->Context.rules.period;
  for (const auto& [wrong, pause] : {std::pair{3, period * 7 / 10}, {1, period / 2}, {1, 0ms}}) {
    for (int i = 0; i < wrong; ++i)
      addresses.NoteWrongPassword(kHome);
    PumpFor(pause);
  }
  EXPECT_EQ(addresses.PasswordDelay(kHome), 0s);
}

TEST(Rules, SettingsChooseThem) {
  const struct {
    std::string name;
    std::vector<std::string> taken;
    std::vector<std::string> refused;
  } cases[] = {
      {"Hardened", {" off", "0", "No", "FALSE", "", "1", "yes", "True", "on "}, {"maybe", "2"}},
      {"StartHidden", {"yes", "0"}, {"2"}},
      {"attachednic", {"", "none", "52:54:00:12:34:aF"}, {"eth0", "52:54:00:12:34:a"}},
      {"AttachedPort", {"0", "65535"}, {"65536", "-1", "12.5", "1x", ""}},
      {"MaxConns", {"2", "9999"}, {"1", "10000"}},
      {"ProxyAddresses", {"", "127.0.0.1, 10.0.0.0/8"}, {"::1", "localhost"}},
      {"TrustedAddresses",
       {"", "0.0.0.0/0", " 10.0.0.1,10.0.0.2\t10.0.0.0/8;255.255.255.255/32, "},
       {"1.2.3", "1.2.3.4.5", "10.0.0.1/8", "10.0.0.0/33", "10.0.0.0/", "010.0.0.1", "256.0.0.1"}},
      {"LocatorAddress", {"", "http://x", "https://x:81/y"}, {"ftp://x", "x", "http://"}},
      {"Hardend", {}, {"1"}},
  };
  const std::set<std::string> on = {"1", "yes", "True", "on "};
  for (const auto& row : cases) {
    for (const bool isTaken : {true, false}) {
      for (const std::string& value : isTaken ? row.taken : row.refused) {
        AppSettings settings(std::nullopt);
        settings.GetValue(row.name, value);
        EXPECT_EQ(FaultsOf(settings).empty(), isTaken) << row.name << "=" << value;
        const bool isHardened = row.name == "Hardened" && (!isTaken || on.contains(value));
        EXPECT_EQ(Rules::FromSettings(settings).name, isHardened ? "hardened" : "classic") << value;
      }
    }
  }
  AppSettings settings(std::nullopt);
  settings.GetValue("TrustedAddresses", "10.1.2.3, 10.2.0.0/16 1.2.3");
  const AddressRanges trusted = Rules::FromSettings(settings).trustedAddresses;
  for (const char* address : {"10.1.2.3", "10.2.0.0", "10.2.255.255"})
    EXPECT_TRUE(trusted.Contains(address)) << address;
  for (const char* address : {"10.1.2.4", "10.1.255.255", "10.3.0.0", "1.2.3", ""})
    EXPECT_FALSE(trusted.Contains(address)) << address;
}

}  // namespace
}  // namespace corvane
