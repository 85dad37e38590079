#include "map/connector.h"

#include <utility>

#include "framework/text.h"
#include "map/certificate_question.h"

namespace corvane::map {

using State = client::Connection::State;

Connector::Connector(client::Connection& connection, Settings& settings, MessagesPane& messages,
                     QWidget& window)
    : myConnection(connection), mySettings(settings), myMessages(messages), myWindow(window) {
  myStateChanged = connection.StateChanged.Connect([this] { FinishIfOnline(); });
  mySessionEnded =
      connection.SessionEnded.Connect([this](const client::Ending& ending) { ShowEnding(ending); });
}

void Connector::MakeDialog() {
  myDialog = new ConnectDialog(mySettings.RecentServers(), myWindow);
  myDialog->ConnectRequested = [this](const RecentServer& server, bool keeps) {
    Try(server, keeps);
  };
  myDialog->Cancelled = [this] { myConnection.Close(); };
  myDialog->Removed = [this](const RecentServer& server) { mySettings.Forget(server); };
}

void Connector::DropDialog() {
  if (myDialog == nullptr) return;
  myDialog->reject();
  std::exchange(myDialog, nullptr)->deleteLater();
}

void Connector::Ask() {
  if (std::exchange(myOffer, std::nullopt)) DropDialog();
  if (myDialog == nullptr) MakeDialog();
  myDialog->open();
}

void Connector::Offer(const Place& place) {
  DropDialog();
  MakeDialog();
  myOffer = place;
  myDialog->Offer(place);
  myDialog->open();
}

void Connector::TryGiven(const RecentServer& server) {
  Ask();
  myDialog->TryGiven(server);
}

void Connector::Try(const RecentServer& server, bool keepsDigest) {
  client::Destination destination;
  destination.host = server.host;
  destination.port = server.port;
  destination.account = {TextFromDisplay(server.network), server.digest.toStdString(),
                         TextFromDisplay(server.userName)};
  if (server.isEncrypted) destination.tls = client::Tls{server.fingerprint, {}};
  // Ends the old connection first, so that its end does not count as this attempt's failure.
  myConnection.Close();
  myUnproven = server;
  if (!keepsDigest) myUnproven->digest.clear();
  myConnection.Open(std::move(destination));
}

void Connector::FinishIfOnline() {
  if (myConnection.CurrentState() != State::Online) return;
  const auto server = std::exchange(myUnproven, std::nullopt);
  // An automatic reconnect leaves a dialog open that the user is typing into.
  if (!server) return;
  mySettings.Remember(*server);
  const bool wantsContent = myDialog->WantsContent();
  myDialog->accept();
  std::exchange(myDialog, nullptr)->deleteLater();
  mySettings.SetCurrentPlace(server->Key());
  const auto offer = std::exchange(myOffer, std::nullopt);
  if (offer && wantsContent && PlaceJoined) PlaceJoined(*offer);
}

void Connector::ShowEnding(const client::Ending& ending) {
  myMessages.Add(ending.Explanation());
  if (!std::exchange(myUnproven, std::nullopt) || !myDialog ||
      ending.cause == client::Ending::Cause::Left)
    return;
  myDialog->ShowFailure(ending);
  if (ending.cause != client::Ending::Cause::Untrusted) return;
  auto* question =
      new CertificateQuestion(myConnection.CurrentDestination().host, ending, *myDialog);
  question->Trusted = [this](const QByteArray& fingerprint) { myDialog->TryTrusting(fingerprint); };
  question->open();
}

}  // namespace corvane::map
